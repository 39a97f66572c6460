#pragma once

#include <QString>

/// What is said once about a family of camera models.
struct ModelNotice {
    QString key; ///< the family's suffix in the settings file
    QString title;
    QString text; ///< rich text
};

/// The settings suffixes of all notices.
inline const QString kEmberlynNoticeKey = QStringLiteral("EML_DL");
inline const QString kTarselNoticeKey = QStringLiteral("TRS");

/// The settings key that keeps a notice's "do not show" choice.
QString ModelNoticeSettingsKey(const QString& noticeKey);

/// The notice for a camera of this model name; null when there is none.
const ModelNotice* FindModelNotice(const QString& modelName);
