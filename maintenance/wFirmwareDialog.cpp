#include "wFirmwareDialog.h"

#include "FirmwareUpdater.h"
#include "Guarded.h"
#include "Mapper.h"
#include "NodeReading.h"
#include "ui_wFirmwareDialog.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>

using namespace Norvane::GenApi;

namespace {

enum Column { ModelColumn = 0, VendorColumn = 1, AddressColumn = 2, FirmwareColumn = 3 };

} // namespace

wFirmwareDialog::wFirmwareDialog(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui_wFirmwareDialog>()) {
    m_ui->setupUi(this);
    m_ui->prmDeviceGroupBox->setTitle(QStringLiteral("Device Information"));
    m_ui->prmDeviceTable->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);

    connect(m_ui->prmBrowseButton, &QPushButton::clicked, this, &wFirmwareDialog::OnBrowseFiles);
    connect(m_ui->prmFwUpdateButtonBox, &QDialogButtonBox::accepted, this,
            &wFirmwareDialog::OnUpdateFirmware);
    connect(m_ui->prmFwUpdateButtonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* worker = new FirmwareUpdater(parent);
    worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, worker, &QObject::deleteLater);
    connect(this, &wFirmwareDialog::updateFirmware, worker, &FirmwareUpdater::startFirmwareUpdate);
    if (parent) {
        connect(worker, SIGNAL(toggleProgressView(bool)), parent, SLOT(ToggleProgressBarView(bool)));
    }
    m_thread.start();
}

wFirmwareDialog::~wFirmwareDialog() {
    m_thread.quit();
    m_thread.wait();
}

void wFirmwareDialog::setCell(int column, const QString& text) {
    m_ui->prmDeviceTable->setItem(0, column, new QTableWidgetItem(text));
}

void wFirmwareDialog::SetCamera(Norvane::CameraPtr camera) {
    for (const int column : {ModelColumn, VendorColumn, AddressColumn, FirmwareColumn}) {
        setCell(column, {});
    }
    m_serial.clear();
    // A file chosen for another camera must not reach this one by a quick click.
    m_filePath.clear();
    m_ui->prmFilePathEdit->clear();
    guarded("showing a camera in the firmware dialog", [&] {
        INodeMap& map = camera->GetTLDeviceNodeMap();
        setCell(ModelColumn, NodeReading::Text(map, "DeviceModelName"));
        setCell(VendorColumn, NodeReading::Text(map, "DeviceVendorName"));
        setCell(FirmwareColumn, NodeReading::Text(map, "DeviceFirmwareVersion"));
        const CIntegerPtr address(map.GetNode("GevDeviceIPAddress"));
        if (address && address->GetAccessMode() == RO) {
            setCell(AddressColumn, NodeReading::Ipv4Text(static_cast<std::uint32_t>(address->GetValue())));
        }
        if (const int serial = Mapper().GetDeviceSerialNumber(camera); serial != -1) {
            m_serial = QString::number(serial);
        }
    });
}

void wFirmwareDialog::OnBrowseFiles() {
    m_filePath.clear();
    m_filePath = QFileDialog::getOpenFileName(this, tr("Open Firmware File"), QStringLiteral("untitled.ez2"),
                                              tr("Firmware (*.zim *. *.ez2)"));
    m_ui->prmFilePathEdit->setText(m_filePath);
}

void wFirmwareDialog::OnUpdateFirmware() {
    if (m_filePath.isEmpty() || m_serial.isEmpty()) {
        QMessageBox::information(this, tr("No firmware file selected!"),
                                 tr("Please select a firmware file before proceeding."), QMessageBox::Ok);
        return;
    }
    const auto answer = QMessageBox::warning(this, tr("Firmware Update"),
                                             tr("WARNING!\n\nDo not connect or disconnect ANY cameras while "
                                                "updating firmware.\n Do you wish to Continue?"),
                                             QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer == QMessageBox::Yes) {
        emit updateFirmware(m_filePath, m_serial);
    }
    accept();
}
