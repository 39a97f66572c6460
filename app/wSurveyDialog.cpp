#include "wSurveyDialog.h"

#include "ProductData.h"
#include "SettingsFile.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpacerItem>
#include <QUrl>
#include <QVBoxLayout>

const QString wSurveyDialog::appOpensSettingsKey = QStringLiteral("AppOpensSinceReset");
const QString wSurveyDialog::noFutureSurveyPopupSettingsKey = QStringLiteral("NoFutureSurveyPopup");

wSurveyDialog::wSurveyDialog(QWidget* parent)
    : QDialog(parent), m_settings(SettingsFilePath(), QSettings::IniFormat) {
    m_preferNoPopup = m_settings.value(noFutureSurveyPopupSettingsKey).toBool();
    SetupUI();
    connect(m_sure, SIGNAL(clicked()), this, SLOT(accept()));
    connect(m_notNow, SIGNAL(clicked()), this, SLOT(reject()));
    connect(this, SIGNAL(finished(int)), this, SLOT(OnDialogFinish(int)));
}

void wSurveyDialog::SetupUI() {
    const QString title = tr("Altrona Software Survey");
    const QString labelStyle = QStringLiteral("QLabel { background-color: transparent; }");
    constexpr QSize kButtonSize(90, 26);

    setWindowFlags(Qt::Dialog);
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(title);

    auto* invitation = new QLabel(
        QStringLiteral("<h3>") + title +
        tr("</h3>We would love feedback on your experience using Tavorin!<br /><br />Note that you may visit "
           "the survey at any time through the <i>Help</i> menu in the toolbar."));
    invitation->setTextFormat(Qt::RichText);
    invitation->setWordWrap(true);
    invitation->setStyleSheet(labelStyle);

    m_doNotAsk = new QCheckBox(tr("&Do not ask again"));

    auto* browserNote = new QLabel(tr("The survey will open in your default web browser."));
    QFont italic = font();
    italic.setItalic(true);
    browserNote->setFont(italic);
    browserNote->setStyleSheet(labelStyle);

    m_sure = new QPushButton(tr("&Sure"));
    m_sure->setFixedSize(kButtonSize);
    m_sure->setDefault(true);
    m_sure->setAutoDefault(true);
    m_notNow = new QPushButton(tr("&Not now"));
    m_notNow->setFixedSize(kButtonSize);

    auto* buttons = new QHBoxLayout;
    buttons->addItem(new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum));
    buttons->addWidget(m_sure);
    buttons->addWidget(m_notNow);

    m_layout = new QVBoxLayout(this);
    m_layout->addWidget(invitation);
    m_layout->addItem(new QSpacerItem(20, 10, QSizePolicy::Minimum, QSizePolicy::Expanding));
    m_layout->addWidget(m_doNotAsk);
    m_layout->addWidget(browserNote);
    m_layout->addLayout(buttons);
}

void wSurveyDialog::SetDoNotAskCheckBoxVisible(bool visible) {
    m_doNotAsk->setChecked(false);
    m_doNotAsk->setVisible(visible);
}

void wSurveyDialog::OnDialogFinish(int result) {
    if (result == QDialog::Accepted) {
        m_settings.setValue(appOpensSettingsKey, 0);
        QDesktopServices::openUrl(QUrl(QLatin1String(kSurveyUrl)));
    }
    if (m_doNotAsk->isChecked()) {
        m_preferNoPopup = true;
        m_settings.setValue(noFutureSurveyPopupSettingsKey, true);
    }
}
