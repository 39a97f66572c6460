#pragma once

#include <QDialog>
#include <QString>

class QCheckBox;
class QLabel;

/// A notice about a camera model family, with the choice not to see it again. Made by the device list, at
/// most once per family and run; hides itself once it is answered. User-interface thread.
class wCameraInfoDialog : public QDialog {
    Q_OBJECT

public:
    /// @param key  the family's suffix in the settings file.
    /// @param text  rich text; its links open in the browser.
    wCameraInfoDialog(QString key, const QString& title, const QString& text, QWidget* parent);

    QString GetKey() const { return m_key; }
    /// Reports the choice and hides the dialog.
    void SaveChoice(bool doNotShow);

public slots:
    void OnOK();

signals:
    void returnDoNotShow(QString key, bool doNotShow);

protected:
    /// Closing by the title bar never suppresses the notice.
    void closeEvent(QCloseEvent* event) override;

private:
    QString m_key;
    QLabel* m_label;
    QCheckBox* m_checkBox;
};
