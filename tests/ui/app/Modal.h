#pragma once

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

/// Calls `answer` for each modal widget of type `T` that appears while this object lives, until it takes one.
/// `answer` returns whether it took it.
template <class T>
class WhenModal {
public:
    explicit WhenModal(std::function<bool(T*)> answer) {
        QObject::connect(&m_timer, &QTimer::timeout, [this, answer = std::move(answer)] {
            auto* modal = qobject_cast<T*>(QApplication::activeModalWidget());
            if (modal && modal->isVisible() && answer(modal)) {
                ++taken;
            }
        });
        m_timer.start(10);
    }

    int taken = 0;

private:
    QTimer m_timer;
};
