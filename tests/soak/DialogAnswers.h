#pragma once

#include "Random.h"

#include <QString>

#include <functional>

/// Answers what stands in the way of the main window: menus that are open, and modal dialogs. Most get what
/// they ask for, some are given up.
class DialogAnswers {
public:
    /// @param folder  where files are saved; files to upload stand there too, named upload-*.
    DialogAnswers(Random& random, QString folder) : m_random(random), m_folder(std::move(folder)) {}

    /// Does one thing with the topmost menu or modal dialog. @returns false when there is none.
    /// @param announce  is called before it is done.
    bool AnswerOne(const std::function<void()>& announce);

private:
    Random& m_random;
    QString m_folder;
    int m_files = 0;
};
