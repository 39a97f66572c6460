#pragma once

#include "FeatureModel.h"
#include "FeatureTreeView.h"
#include "TestDevice.h"
#include "wFeatureTree.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStringList>
#include <QTest>
#include <QToolButton>

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>

inline void initPictures() {
    Q_INIT_RESOURCE(tavorin);
}

/// A feature tree in a window, and ways to look at it and to work it as a person does.
class TreeFixture : public testing::Test {
protected:
    TreeFixture() {
        initPictures();
        m_tree = std::make_unique<wFeatureTree>(nullptr);
        m_tree->resize(500, 700);
        m_tree->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(m_tree.get()));
        m_tree->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_tree.get()));
    }

    Norvane::CameraPtr show(std::shared_ptr<TestCamera> camera) {
        m_camera = std::move(camera);
        const Norvane::CameraPtr handle(m_camera);
        m_tree->UpdateTreeViewCamera(handle);
        view()->expandAll();
        return handle;
    }

    FeatureTreeView* view() const { return m_tree->findChild<FeatureTreeView*>(); }
    QLineEdit* searchBox() const {
        // An open editor is a line edit too, but it lives in the view.
        for (QLineEdit* edit : m_tree->findChildren<QLineEdit*>()) {
            if (!view()->isAncestorOf(edit)) {
                return edit;
            }
        }
        return nullptr;
    }
    QStandardItemModel* model() const { return m_tree->GetCurrentModel(); }

    /// The rows below a parent as "name=value", deeper ones indented by a dash a level.
    QStringList rows(const QModelIndex& parent = {}, const QString& indent = {}) const {
        QStringList lines;
        for (int row = 0; row < model()->rowCount(parent); ++row) {
            const QModelIndex name = model()->index(row, 0, parent);
            const QVariant value = name.sibling(row, 1).data(Qt::EditRole);
            lines << indent + name.data().toString() +
                         (value.canConvert<ComboBoxValues>() ? "=" + value.value<ComboBoxValues>().currentText
                          : value.isValid()                  ? "=" + value.toString()
                                                             : QString());
            lines << rows(name, indent + "-");
        }
        return lines;
    }

    /// The value cell of the first row with this name; shown in the current model.
    QModelIndex cell(const QString& name) const {
        const QList<QStandardItem*> found = model()->findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? QModelIndex() : found.front()->index().sibling(found.front()->row(), 1);
    }
    QString shown(const QString& name) const { return cell(name).data(Qt::EditRole).toString(); }

    void click(const QModelIndex& index) {
        view()->scrollTo(index);
        const QPoint place = view()->visualRect(index).center();
        QCursor::setPos(view()->viewport()->mapToGlobal(place));
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, place);
    }
    bool labelled(const QString& text) const {
        const auto labels = m_tree->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](QLabel* label) { return label->text() == text; });
    }
    void pressButton(const char* name) {
        QTest::mouseClick(m_tree->findChild<QToolButton*>(name), Qt::LeftButton);
    }
    /// The open editor of a kind; null when there is none.
    template <class Editor>
    Editor* editor() const {
        for (Editor* candidate : view()->viewport()->findChildren<Editor*>()) {
            if (candidate->isVisible()) {
                return candidate;
            }
        }
        return nullptr;
    }

    std::unique_ptr<wFeatureTree> m_tree;
    std::shared_ptr<TestCamera> m_camera;
};
