#pragma once

#include "CameraStock.h"
#include "Random.h"

#include <QMap>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

class NorSimpleGUI_QT;
class QDialog;
class QTreeWidget;
class QTreeWidgetItem;
class wDeviceList;
class wFeaturesTabController;
class wImageDisplay;
class wRecordingDialog;

/// Uses the viewer's main window as a person would who is in a hurry and has no plan: one random click,
/// word or change at a time, by Qt's synthetic mouse and keys. User-interface thread.
class Hands {
public:
    /// @param folder  where recordings go.
    Hands(NorSimpleGUI_QT& window, CameraStock& stock, Random& random, QString folder);

    /// Does one thing; may run event loops of dialogs inside.
    /// @param announce  is told the thing's name before it is done.
    void ActOnce(const std::function<void(const char*)>& announce);
    /// Opens every camera of the list, one beside the other, and lets it stream.
    void OpenAll();
    /// Closes one dialog or display, as a person does who leaves. @returns false when none is open.
    bool CloseOne();
    void StopRecordings();

    /// How often each thing was done.
    const QMap<QString, int>& Counts() const { return m_counts; }
    QList<wImageDisplay*> OpenDisplays() const;

private:
    struct Action {
        const char* name;
        int weight;
        std::function<bool(Hands&)> act; ///< returns false when there was nothing to do it with
    };
    static const std::vector<Action> kActions;

    bool DeviceListMenu();
    bool PressDisplayButton();
    bool StartRecording();
    bool StopRecording();
    bool DisplayMenu();
    bool TurnWheel();
    bool FloatOrDock();
    bool SwitchInferenceOn();
    bool CloseDisplay();
    bool CloseDialog();
    bool TypeSearch();
    bool SortTree();
    bool ExpandTree();
    bool ChangeFeature();
    bool ShowNodeInformation();
    bool MoveFile();
    bool ShowHelp();
    bool ResizeWindow();

    bool Press(QWidget* parent, const char* button);
    QTreeWidgetItem* Row(bool camera);
    bool ClickRow(const QTreeWidgetItem* row, bool twice);
    wImageDisplay* AnyDisplay();
    QModelIndex AnyFeature();
    void ShowTab(int index);

    NorSimpleGUI_QT& m_window;
    CameraStock& m_stock;
    Random& m_random;
    QString m_folder;
    wDeviceList* m_list;
    wFeaturesTabController* m_tabs;
    QTreeWidget* m_tree;
    QMap<QString, int> m_counts;
    int m_weights = 0;
};
