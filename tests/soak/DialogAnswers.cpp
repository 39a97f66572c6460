#include "DialogAnswers.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {

void walkMenu(QMenu* menu, Random& random) {
    if (random.OneIn(6)) {
        QTest::keyClick(menu, Qt::Key_Escape);
        return;
    }
    for (int steps = 1 + random.Below(12); steps > 0; --steps) {
        QTest::keyClick(menu, Qt::Key_Down);
    }
    QTest::keyClick(menu, Qt::Key_Return);
}

} // namespace

bool DialogAnswers::AnswerOne(const std::function<void()>& announce) {
    if (QWidget* popup = QApplication::activePopupWidget()) {
        announce();
        if (auto* menu = qobject_cast<QMenu*>(popup)) {
            walkMenu(menu, m_random);
        } else {
            popup->close();
        }
        return true;
    }
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal) {
        return false;
    }
    announce();
    if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
        if (m_random.OneIn(5)) {
            dialog->reject();
            return true;
        }
        QString name = m_folder;
        if (dialog->fileMode() == QFileDialog::ExistingFile ||
            dialog->fileMode() == QFileDialog::ExistingFiles) {
            const QStringList uploads = QDir(m_folder).entryList({"upload-*"}, QDir::Files);
            name += '/' + m_random.Pick(uploads);
        } else if (dialog->fileMode() == QFileDialog::AnyFile) {
            const QStringList filters = dialog->nameFilters();
            dialog->selectNameFilter(m_random.Pick(filters));
            name += QString("/still-%1").arg(m_files++);
        }
        if (auto* edit = dialog->findChild<QLineEdit*>("fileNameEdit")) {
            edit->setText(name);
        }
        QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
        const auto buttons = box->buttons();
        if (buttons.isEmpty()) {
            box->close();
        } else {
            QTest::mouseClick(m_random.Pick(buttons), Qt::LeftButton);
        }
    } else if (auto* input = qobject_cast<QInputDialog*>(modal)) {
        input->setDoubleValue(1.0 + m_random.Below(119));
        input->accept();
    } else {
        modal->close();
    }
    return true;
}
