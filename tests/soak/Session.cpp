#include "Session.h"

#include "norsimplegui_qt.h"
#include "norvane/System.h"
#include "wImageDisplay.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QScopedValueRollback>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent>

namespace {

constexpr int kTickMs = 60;
constexpr int kPatienceMs = 60'000;
constexpr qint64 kFolderLimit = 400LL << 20U;
/// Long enough for threads that were told to end to have ended, and for the pool to let its idle ones go.
constexpr int kSettleMs = 1500;

int plugged() {
    return static_cast<int>(Norvane::System::GetInstance()->GetCameras(true).GetSize());
}

int streams() {
    int count = 0;
    const Norvane::CameraList cameras = Norvane::System::GetInstance()->GetCameras(false);
    for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
        try {
            count += cameras.GetByIndex(i)->IsStreaming() ? 1 : 0;
        } catch (const Norvane::Exception&) {
            // it left while it was asked
        }
    }
    return count;
}

} // namespace

Session::Session(NorSimpleGUI_QT& window, CameraStock& stock, Random& random, const QString& folder,
                 Plan plan, std::function<void(const Sample&, const char*)> onSample)
    : m_window(window), m_stock(stock), m_random(random), m_folder(folder), m_plan(plan),
      m_onSample(std::move(onSample)), m_hands(window, stock, random, folder), m_answers(random, folder) {
    for (const int size : {0, 1000, 100'000}) {
        QFile file(folder + QString("/upload-%1").arg(size));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(QByteArray(size, 'u'));
        }
    }
    // Idle threads of Qt's pool go after half a minute unless told otherwise, and would be counted at rest.
    QThreadPool::globalInstance()->setExpiryTimeout(kSettleMs / 3);
}

void Session::Start() {
    m_clock.start();
    m_nextSample = m_plan.sampleEvery;
    m_nextRest = m_plan.restEvery;
    QTimer::singleShot(0, this, [this] {
        WarmUp();
        Tick();
    });
}

void Session::Tick() {
    // Armed first: what is done below may run an event loop, in which dialogs wait for an answer.
    QTimer::singleShot(kTickMs, this, [this] { Tick(); });
    if (Seconds() >= m_nextSample && !m_isResting) {
        m_nextSample = Seconds() + m_plan.sampleEvery;
        TakeSample(false);
        KeepFolderSmall(false);
    }
    if (m_answers.AnswerOne([this] { m_stalls.Label("dialog answered"); })) {
        return;
    }
    if (m_depth > 0) {
        // A file on its way; now and then its camera leaves.
        if (!m_isResting && m_random.OneIn(20)) {
            m_stock.Change();
        }
        return;
    }
    const QScopedValueRollback<int> depth(m_depth, m_depth + 1);
    if (Seconds() >= m_nextRest || Seconds() >= m_plan.seconds) {
        Rest();
        m_nextRest = Seconds() + m_plan.restEvery;
        if (Seconds() >= m_plan.seconds) {
            QApplication::quit();
        }
        return;
    }
    Act();
}

// What each camera leaves for good, as its node maps, is there before anything is judged.
void Session::WarmUp() {
    m_stock.PlugAll();
    WaitFor("all cameras plugged in at first", [this] { return plugged() == m_stock.Size(); });
    m_hands.OpenAll();
    QTest::qWait(kSettleMs);
}

void Session::Act() {
    m_hands.ActOnce([this](const char* action) { m_stalls.Label(action); });
}

bool Session::WaitFor(const char* what, const std::function<bool()>& condition) {
    if (QTest::qWaitFor(condition, kPatienceMs)) {
        return true;
    }
    m_faults.push_back(std::string("within a minute there were not ") + what);
    return false;
}

void Session::Rest() {
    const QScopedValueRollback<bool> resting(m_isResting, true);
    m_stalls.Label("closing all");
    m_hands.StopRecordings();
    WaitFor("all windows closed", [this] { return !m_hands.CloseOne(); });
    // A display that was disconnected waits, unseen, for the next removal of a camera; so there is one.
    m_stalls.Label("all plugged in");
    m_stock.PlugAll();
    WaitFor("all cameras plugged in", [this] { return plugged() == m_stock.Size(); });
    m_stalls.Label("all unplugged");
    m_stock.UnplugAll();
    WaitFor("all cameras and displays gone",
            [this] { return plugged() == 0 && m_window.findChildren<wImageDisplay*>().isEmpty(); });
    m_stalls.Label("rest");
    KeepFolderSmall(true);
    QTest::qWait(kSettleMs);
    TakeSample(true);
    m_stock.PlugAll();
    WaitFor("all cameras plugged in again", [this] { return plugged() == m_stock.Size(); });
}

void Session::TakeSample(bool atRest) {
    Sample sample;
    sample.seconds = Seconds();
    sample.isAtRest = atRest;
    const char* stalledBy = "";
    sample.stallMs = m_stalls.TakeLongestMs(&stalledBy);
    sample.holding = Holding::Now();
    sample.displays = m_hands.OpenDisplays().size();
    sample.streams = streams();
    for (const int count : m_hands.Counts()) {
        sample.actions += count;
    }
    m_samples.push_back(sample);
    m_onSample(sample, stalledBy);
}

void Session::KeepFolderSmall(bool empty) {
    qint64 size = 0;
    QStringList files;
    for (QDirIterator it(m_folder, QDir::Files); it.hasNext();) {
        it.next();
        if (!it.fileName().startsWith("upload-")) {
            size += it.fileInfo().size();
            files.append(it.filePath());
        }
    }
    if (empty || size > kFolderLimit) {
        m_hands.StopRecordings();
        // Not here: a person's disk may take its time, and the stalls that are measured are the viewer's.
        QtConcurrent::run([files] {
            for (const QString& file : files) {
                QFile::remove(file);
            }
        });
    }
}
