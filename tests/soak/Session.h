#pragma once

#include "CameraStock.h"
#include "DialogAnswers.h"
#include "Hands.h"
#include "Meter.h"
#include "Verdict.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <string>
#include <vector>

class NorSimpleGUI_QT;

/// One run: uses the window at random, keeps the folder of recordings small, takes a sample every few
/// seconds, and every so often lets everything come to rest, closed and unplugged, and takes one there.
/// User-interface thread, inside its event loop.
class Session : public QObject {
public:
    struct Plan {
        double seconds;
        double sampleEvery;
        double restEvery;
    };

    /// @param folder    an existing folder for recordings and transfers.
    /// @param onSample  gets each sample as it is taken.
    Session(NorSimpleGUI_QT& window, CameraStock& stock, Random& random, const QString& folder, Plan plan,
            std::function<void(const Sample&, const char* stalledBy)> onSample);

    /// Starts the clock; the application quits when the time is over.
    void Start();

    const std::vector<Sample>& Samples() const { return m_samples; }
    const QMap<QString, int>& Counts() const { return m_hands.Counts(); }
    /// What failed on the way, beside what the samples tell.
    const std::vector<std::string>& Faults() const { return m_faults; }

private:
    void Tick();
    void WarmUp();
    void Act();
    void Rest();
    bool WaitFor(const char* what, const std::function<bool()>& condition);
    void TakeSample(bool atRest);
    void KeepFolderSmall(bool empty);
    double Seconds() const { return static_cast<double>(m_clock.elapsed()) / 1000.0; }

    NorSimpleGUI_QT& m_window;
    CameraStock& m_stock;
    Random& m_random;
    QString m_folder;
    Plan m_plan;
    std::function<void(const Sample&, const char*)> m_onSample;
    StallMeter m_stalls;
    Hands m_hands;
    DialogAnswers m_answers;
    QElapsedTimer m_clock;
    double m_nextSample = 0.0;
    double m_nextRest = 0.0;
    bool m_isResting = false;
    int m_depth = 0; ///< event loops of dialogs inside one another
    std::vector<Sample> m_samples;
    std::vector<std::string> m_faults;
};
