#include "StartUp.h"

#include <QDir>
#include <QMessageBox>

#include <malloc.h>

void returnLargeMemory() {
    constexpr int kLargeBlock = 2 << 20; // bytes; larger than what is allocated at the pace of images
    ::mallopt(M_MMAP_THRESHOLD, kLargeBlock);
}

void initTavorinResources() {
    Q_INIT_RESOURCE(tavorin);
}

Norvane::SystemPtr obtainSystem(const std::function<Norvane::SystemPtr()>& getInstance) {
    try {
        return getInstance();
    } catch (const Norvane::Exception& error) {
        QMessageBox box;
        QMessageBox::critical(nullptr, QStringLiteral("Norvane Error"), QString::fromUtf8(error.what()),
                              QMessageBox::Ok, QMessageBox::NoButton);
        box.setFixedSize(500, 200);
        return {};
    }
}
