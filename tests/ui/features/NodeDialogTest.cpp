#include "TestDevice.h"
#include "wPrmDialog.h"

#include <QLabel>
#include <QTreeWidget>

#include <gmock/gmock.h>

using namespace Norvane::GenApi;

namespace {

class NodeDialogTest : public testing::Test {
protected:
    /// The rows of the dialog as "label=value".
    QStringList rowsOf(const std::string& nodes, const char* name) {
        m_map = makeMap(nodes, m_port);
        m_dialog.fillParamData(CNodePtr(m_map->GetNode(name)));
        const QTreeWidgetItem* top = m_dialog.findChild<QTreeWidget*>("prmTreeWidget")->topLevelItem(0);
        QStringList rows;
        for (int i = 0; i < top->childCount(); ++i) {
            rows << top->child(i)->text(0) + "=" + top->child(i)->text(1);
        }
        return rows;
    }

    std::shared_ptr<CountingPort> m_port = std::make_shared<CountingPort>();
    std::shared_ptr<INodeMap> m_map;
    wPrmDialog m_dialog{nullptr};
};

TEST_F(NodeDialogTest, ListsAllThatTheDescriptionSays) {
    m_port->setValue(0, 30);
    const QStringList rows = rowsOf(
        "<Integer Name=\"Width\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip><Description>long</Description>"
        "<DisplayName>Image Width</DisplayName><Visibility>Expert</Visibility><pValue>Reg</pValue>"
        "<Min>2</Min><Max>100</Max><Inc>4</Inc><Unit>px</Unit></Integer>" +
            integer("Reg", 0),
        "Width");
    EXPECT_EQ(rows, QStringList({"Access Mode=RW",
                                 "Alias=None",
                                 "Caching Mode=WriteThrough",
                                 "Description=long",
                                 "Display Name=Image Width",
                                 "Event ID=",
                                 "IsAvailable=True",
                                 "IsCachable=True",
                                 "IsImplemented=True",
                                 "IsReadable=True",
                                 "IsStreamable=False",
                                 "IsWriteable=True",
                                 "Name=Width",
                                 "Namespace=Standard",
                                 "Polling Time=-1",
                                 "Tooltip=tip",
                                 "Type=intfIInteger",
                                 "Min=2",
                                 "Max=100",
                                 "Value=30",
                                 "Increment Value=4",
                                 "Unit=px",
                                 "Visibility=Expert"}));
    EXPECT_EQ(m_dialog.findChild<QLabel*>("prmNameLabel")->text(), "Image Width");
    EXPECT_EQ(m_dialog.findChild<QLabel*>("prmDescLabel")->text(), "long");
    EXPECT_EQ(m_dialog.windowTitle(), "Node Information");
}

TEST_F(NodeDialogTest, ShowsValuesOfWhatIsReadable) {
    const QStringList writeOnly = rowsOf(integer("Key", 0, {}, "WO"), "Key");
    EXPECT_TRUE(writeOnly.contains("Type=intfIInteger"));
    EXPECT_TRUE(writeOnly.filter(QRegExp("^(Min|Max|Value|Unit)=")).isEmpty())
        << writeOnly.join('|').toStdString();

    const QStringList command =
        rowsOf("<Command Name=\"Go\"><Value>0</Value><CommandValue>1</CommandValue></Command>", "Go");
    EXPECT_EQ(command.indexOf("Type=intfICommand") + 1, command.indexOf(QRegExp("Visibility=.*")));

    EXPECT_TRUE(rowsOf("<Boolean Name=\"Flag\"><Value>1</Value></Boolean>", "Flag").contains("Value=True"));
    EXPECT_TRUE(rowsOf(text("Name", "abc"), "Name").contains("Value=abc"));
    EXPECT_TRUE(
        rowsOf("<Integer Name=\"Listed\"><Value>4</Value><ValidValueSet>1;4;9</ValidValueSet></Integer>",
               "Listed")
            .contains("Increment Value=1,4,9"));
    EXPECT_TRUE(
        rowsOf(integer("Real", 0) + "<Integer Name=\"With\"><pAlias>Real</pAlias><Value>1</Value></Integer>",
               "With")
            .contains("Alias=Available"));
}

} // namespace
