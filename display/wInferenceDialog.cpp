#include "wInferenceDialog.h"

#include "Guarded.h"
#include "norvane/genapi/GenApi.h"
#include "ui_wInferenceDialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QColorDialog>
#include <QDoubleValidator>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

wInferenceDialog::wInferenceDialog(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::wInferenceDialog>()),
      m_fontDialog(std::make_unique<QFontDialog>()), m_colorDialog(std::make_unique<QColorDialog>()),
      m_location(QStandardPaths::writableLocation(QStandardPaths::HomeLocation) + QStringLiteral("/Videos")),
      m_confidenceText(QStringLiteral("0")), m_font(QApplication::font()), m_chosenFont(m_font) {
    m_ui->setupUi(this);
    QFile styleSheet(QStringLiteral(":qss/stylesheet.qss"));
    if (styleSheet.open(QIODevice::ReadOnly) && styleSheet.size() > 0) {
        setStyleSheet(QString::fromLatin1(styleSheet.readAll()));
    }
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Apply"));

    auto* validator = new QDoubleValidator(0.0, 100.0, 2, this);
    validator->setNotation(QDoubleValidator::StandardNotation);
    validator->setLocale(QLocale::c()); // the text is read back with a point
    m_ui->editBox_Confidence->setValidator(validator);
    m_fontDialog->setCurrentFont(m_font);
    m_colorDialog->setCurrentColor(m_color);
    m_ui->editBox_Filename->setText(m_location);
    m_ui->editBox_Confidence->setText(m_confidenceText);
    m_ui->checkBox_AutoFont->setCheckState(m_autoFontState);
    m_ui->spinBox_FontSize->setValue(m_font.pointSize());

    connect(m_ui->button_Browse, &QPushButton::clicked, this, &wInferenceDialog::OnBrowseFolder);
    connect(m_ui->editBox_Filename, &QLineEdit::editingFinished, this,
            &wInferenceDialog::OnFileLocationTextBoxChanged);
    connect(m_ui->editBox_Confidence, &QLineEdit::textEdited, this,
            &wInferenceDialog::OnConfidenceTextBoxEdited);
    connect(m_ui->spinBox_FontSize, qOverload<int>(&QSpinBox::valueChanged), this,
            &wInferenceDialog::OnFontSizeChanged);
    connect(m_ui->button_FontPicker, &QPushButton::clicked, this, &wInferenceDialog::OnFontDialogOpen);
    connect(m_ui->button_ColorPicker, &QPushButton::clicked, this, &wInferenceDialog::OnColorDialogOpen);
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &wInferenceDialog::OnApply);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &wInferenceDialog::OnCancel);
    connect(m_fontDialog.get(), &QFontDialog::fontSelected, this, &wInferenceDialog::OnFontDialogSave);
    connect(m_colorDialog.get(), &QColorDialog::colorSelected, this,
            [this](const QColor& color) { m_chosenColor = color; });
}

wInferenceDialog::~wInferenceDialog() {
    // An edit that loses the focus on the way down would still tell its dialog.
    for (QObject* control : findChildren<QObject*>()) {
        control->disconnect(this);
    }
}

void wInferenceDialog::setCamProperty(Norvane::CameraPtr camera) {
    if (!camera.IsValid()) {
        return;
    }
    guarded("Naming the camera in the inference dialog", [&] {
        const Norvane::GenApi::CStringPtr serial = camera->GetTLDeviceNodeMap().GetNode("DeviceSerialNumber");
        setWindowTitle(QStringLiteral("Inference Label Configuration - ") +
                       QString::fromUtf8(serial->GetValue().c_str()));
    });
}

void wInferenceDialog::OnBrowseFolder() {
    // Shown without a loop of its own: the camera, and this dialog with it, may go away meanwhile.
    auto* dialog = new QFileDialog(this, tr("Open File"), m_ui->editBox_Filename->text());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, m_ui->editBox_Filename, &QLineEdit::setText);
    dialog->open();
}

void wInferenceDialog::OnFileLocationTextBoxChanged() {}

void wInferenceDialog::OnConfidenceTextBoxEdited(const QString& text) {
    if (text.toFloat() > 100.0F) {
        m_ui->editBox_Confidence->setText(QStringLiteral("100"));
    }
}

void wInferenceDialog::OnFontSizeChanged(int size) {
    QFont font = m_fontDialog->currentFont();
    font.setPointSize(size);
    m_fontDialog->setCurrentFont(font);
}

void wInferenceDialog::OnFontDialogOpen() {
    m_fontDialog->show();
    m_fontDialog->setFocus();
    m_fontDialog->raise();
}

void wInferenceDialog::OnColorDialogOpen() {
    m_colorDialog->show();
    m_colorDialog->setFocus();
    m_colorDialog->raise();
}

void wInferenceDialog::OnFontDialogSave(const QFont& font) {
    m_chosenFont = font;
    m_ui->spinBox_FontSize->setValue(font.pointSize());
}

void wInferenceDialog::OnApply() {
    applyChanges();
    validateFileLocation();
}

void wInferenceDialog::applyChanges() {
    m_location = m_ui->editBox_Filename->text();
    m_confidenceText = m_ui->editBox_Confidence->text();
    m_autoFontState = m_ui->checkBox_AutoFont->checkState();
    m_font = m_chosenFont;
    m_font.setPointSize(m_ui->spinBox_FontSize->value());
    m_color = m_chosenColor;
    emit InferenceClassLabelLocationChanged(m_location);
    emit InferenceClassificationConfidenceThresholdChanged(
        static_cast<double>(m_confidenceText.toFloat() / 100.0F));
    emit InferenceLabelDisplaySettingsChanged(m_ui->checkBox_AutoFont->isChecked(), m_font, m_color);
}

void wInferenceDialog::validateFileLocation() {
    const QString name = m_ui->editBox_Filename->text();
    if (!QFileInfo(name).isFile()) {
        auto* box = new QMessageBox(QMessageBox::Warning, tr("Warning"),
                                    tr("Warning: File '%1' does not exist").arg(name), QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }
}

void wInferenceDialog::OnCancel() {
    m_fontDialog->hide();
    m_colorDialog->hide();
    emit InferenceDialogHidden();
    m_ui->editBox_Filename->setText(m_location);
    m_ui->editBox_Confidence->setText(m_confidenceText);
    m_ui->checkBox_AutoFont->setCheckState(m_autoFontState);
    m_ui->spinBox_FontSize->setValue(m_font.pointSize());
    m_fontDialog->setCurrentFont(m_font);
    m_colorDialog->setCurrentColor(m_color);
    m_chosenFont = m_font;
    m_chosenColor = m_color;
}

void wInferenceDialog::closeEvent(QCloseEvent* event) {
    OnCancel();
    event->accept();
}

void wInferenceDialog::reject() {
    OnCancel();
    hide();
}
