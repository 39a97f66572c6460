#include "ModelNotice.h"

#include "NoticeLinks.h"

namespace {

QString link(const char* url) {
    return QStringLiteral("<a href=\"%1\">%1</a>").arg(QLatin1String(url));
}

const ModelNotice& emberlynNotice() {
    static const ModelNotice notice{
        kEmberlynNoticeKey, QStringLiteral("A Emberlyn Deep Learning camera has been detected."),
        QStringLiteral(
            "See the Emberlyn Deep Learning Resources page for links to relevant documentation and "
            "software.<br><br>             ") +
            link(kEmberlynResourcesUrl)};
    return notice;
}

const ModelNotice& tarselNotice() {
    static const ModelNotice notice{
        kTarselNoticeKey, QStringLiteral("An Tarsel camera has been detected."),
        QStringLiteral("Streaming from an Tarsel camera requires specific host system configuration, cabling "
                       "and camera settings.<br>            For 10GigE best practices, refer to our white "
                       "paper article:<br><br>             ") +
            link(kTarselGuideUrl)};
    return notice;
}

} // namespace

QString ModelNoticeSettingsKey(const QString& noticeKey) {
    return QStringLiteral("DoNotShowInfoDialog_") + noticeKey;
}

const ModelNotice* FindModelNotice(const QString& modelName) {
    if (modelName.contains(QLatin1String("TRS"))) {
        return &tarselNotice();
    }
    if (modelName.contains(QLatin1String("EML")) && modelName.contains(QLatin1String("DL"))) {
        return &emberlynNotice();
    }
    return nullptr;
}
