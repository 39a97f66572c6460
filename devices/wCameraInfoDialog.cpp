#include "wCameraInfoDialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

wCameraInfoDialog::wCameraInfoDialog(QString key, const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent), m_key(std::move(key)), m_label(new QLabel(text)),
      m_checkBox(new QCheckBox(tr("Do not show this message again"))) {
    setWindowTitle(title);
    m_label->setTextFormat(Qt::RichText);
    m_label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    m_label->setOpenExternalLinks(true);
    m_label->setWordWrap(true);
    m_checkBox->setMinimumSize(20, 20);
    auto* okButton = new QPushButton(tr("OK"));

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(5);
    layout->addWidget(m_label);
    layout->addSpacing(10);
    layout->addWidget(m_checkBox);
    layout->addWidget(okButton);
    setFixedWidth(530);
    // As high as the text at this width; the layout's own hint is for a narrower one.
    ensurePolished();
    resize(width(), layout->heightForWidth(width()));

    connect(okButton, &QPushButton::clicked, this, &wCameraInfoDialog::OnOK);
}

void wCameraInfoDialog::SaveChoice(bool doNotShow) {
    emit returnDoNotShow(m_key, doNotShow);
    hide();
}

void wCameraInfoDialog::OnOK() {
    SaveChoice(m_checkBox->checkState() != Qt::Unchecked);
}

void wCameraInfoDialog::closeEvent(QCloseEvent* event) {
    if (isVisible()) {
        SaveChoice(false);
    }
    QDialog::closeEvent(event);
}
