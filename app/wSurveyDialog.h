#pragma once

#include <QDialog>
#include <QSettings>
#include <QString>

class QCheckBox;
class QPushButton;
class QVBoxLayout;

/// Invites to the feedback survey, which opens in the browser. Made once by the main window; shown from the
/// Help menu, or run by the main window's automatic offer with the choice never to be asked again.
/// User-interface thread.
class wSurveyDialog : public QDialog {
    Q_OBJECT

public:
    /// Counts the starts since the settings were reset or the survey was taken.
    static const QString appOpensSettingsKey;
    static const QString noFutureSurveyPopupSettingsKey;

    explicit wSurveyDialog(QWidget* parent);

    /// Whether the user declined all automatic offers.
    bool PreferNoPopup() const { return m_preferNoPopup; }
    /// Unticks the box, then shows or hides it.
    void SetDoNotAskCheckBoxVisible(bool visible);

public slots:
    void OnDialogFinish(int result);

private:
    void SetupUI();

    QSettings m_settings;
    QVBoxLayout* m_layout = nullptr;
    QCheckBox* m_doNotAsk = nullptr;
    QPushButton* m_sure = nullptr;
    QPushButton* m_notNow = nullptr;
    bool m_preferNoPopup = false;
};
