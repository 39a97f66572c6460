#include "FirmwareUpdater.h"

#include <atomic>

namespace {

std::atomic<ShowProgressFunction> showProgress{nullptr};

struct LastAction {
    std::mutex mutex;
    QString text;
};

LastAction& lastAction() {
    static LastAction action;
    return action;
}

} // namespace

FirmwareUpdater::FirmwareUpdater(QWidget* owner) : m_owner(owner) {}

void FirmwareUpdater::startFirmwareUpdate(const QString&, const QString&) {
    emit toggleProgressView(true);
    const std::lock_guard lock(m_mutex);
}

void SetShowProgressFunction(ShowProgressFunction function) {
    showProgress = function;
}

QString LastFirmwareAction() {
    LastAction& last = lastAction();
    const std::lock_guard lock(last.mutex);
    return last.text;
}

int ProgressCallbackFcn(const char* action, unsigned int percent, int a, int b) {
    if (action) {
        LastAction& last = lastAction();
        const std::lock_guard lock(last.mutex);
        if (!last.text.toUtf8().contains(action[0])) {
            last.text = QString::fromUtf8(action);
        }
    }
    if (const ShowProgressFunction function = showProgress) {
        function(action, percent, a, b);
    }
    return 1;
}
