#pragma once

#include "norvane/Camera.h"

#include <QColor>
#include <QDialog>
#include <QFont>

#include <memory>

class QColorDialog;
class QFontDialog;
namespace Ui {
class wInferenceDialog;
}

/// How the inference results of one image display are labelled: class names, threshold, font and colour.
/// Owned by the image display; its values live as long as it does. User-interface thread.
class wInferenceDialog : public QDialog {
    Q_OBJECT

public:
    explicit wInferenceDialog(QWidget* parent = nullptr);
    ~wInferenceDialog() override;

    /// Names the camera in the title; an invalid handle leaves it.
    void setCamProperty(Norvane::CameraPtr camera);

signals:
    void InferenceDialogHidden();
    void InferenceClassLabelLocationChanged(QString path);
    /// A fraction from 0 to 1.
    void InferenceClassificationConfidenceThresholdChanged(double fraction);
    void InferenceLabelDisplaySettingsChanged(bool useFixedFontSize, QFont font, QColor color);

public slots:
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void OnBrowseFolder();
    void OnFileLocationTextBoxChanged();
    void OnConfidenceTextBoxEdited(const QString& text);
    void OnFontSizeChanged(int size);
    void OnFontDialogOpen();
    void OnColorDialogOpen();
    void OnFontDialogSave(const QFont& font);
    void OnApply();
    void OnCancel();

private:
    void applyChanges();
    void validateFileLocation();

    std::unique_ptr<Ui::wInferenceDialog> m_ui;
    std::unique_ptr<QFontDialog> m_fontDialog;
    std::unique_ptr<QColorDialog> m_colorDialog;

    // As applied last; Cancel goes back to these.
    QString m_location;
    QString m_confidenceText;
    Qt::CheckState m_autoFontState = Qt::Checked;
    QFont m_font;
    QColor m_color = Qt::darkGreen;

    // As chosen in the font and colour dialogs since.
    QFont m_chosenFont;
    QColor m_chosenColor = Qt::darkGreen;
};
