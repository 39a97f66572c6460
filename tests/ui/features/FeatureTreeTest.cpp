#include "TreeFixture.h"

#include "wPrmDialog.h"

#include <QLabel>

#include <thread>

using namespace Norvane::GenApi;

namespace {

const std::string kDevice =
    category("Root", "DeviceControl Acquisition Broken") +
    category("DeviceControl", "DeviceModelName Width Missing Away") +
    category("Acquisition", "AcquisitionMode Nested") + category("Nested", "Height") +
    text("DeviceModelName", "Duskwing X") + integer("Width", 0) + integer("Height", 4) +
    "<Category Name=\"Broken\"><pIsAvailable>Never</pIsAvailable><pFeature>Height</pFeature></Category>"
    "<Integer Name=\"Never\"><Value>0</Value></Integer>"
    "<Integer Name=\"Missing\"><pIsImplemented>Never</pIsImplemented><Value>1</Value></Integer>"
    "<Integer Name=\"Away\"><Description>Counts, if n &lt; 5 &amp; more.</Description>"
    "<pIsAvailable>Never</pIsAvailable><Value>1</Value></Integer>" +
    "<Enumeration Name=\"AcquisitionMode\">"
    "<EnumEntry "
    "Name=\"EnumEntry_AcquisitionMode_Continuous\"><Value>0</Value><Symbolic>Continuous</Symbolic></"
    "EnumEntry>"
    "<EnumEntry "
    "Name=\"EnumEntry_AcquisitionMode_SingleFrame\"><Value>1</Value><Symbolic>SingleFrame</Symbolic></"
    "EnumEntry>"
    "<pValue>ModeReg</pValue></Enumeration>" +
    integer("ModeReg", 8);
const std::string kTransportLayer =
    category("Root", "Information") + category("Information", "Abc") + text("Abc", "id");
const std::string kStream = category("Root", "Counters") + category("Counters", "Lost") + integer("Lost", 0);

std::shared_ptr<TestCamera> makeCamera(const std::string& device = kDevice) {
    return std::make_shared<TestCamera>(device, kTransportLayer, kStream);
}

using FeatureTreeTest = TreeFixture;

TEST_F(FeatureTreeTest, ShowsTheThreeMapsOfACamera) {
    show(makeCamera());
    EXPECT_EQ(rows(), QStringList({"Duskwing X", "-DeviceControl", "--DeviceModelName=Duskwing X",
                                   "--Width=0", "--Away=0", "-Acquisition", "--AcquisitionMode=Continuous",
                                   "--Nested", "---Height=0", "-Broken", "Transport Layer", "-Information",
                                   "--Abc=id", "Stream Parameters", "-Counters", "--Lost=0"}))
        << "not implemented features are left out, not available ones are shown";
    EXPECT_EQ(m_tree->windowTitle(), "Duskwing X");
    const QModelIndex header = model()->index(0, 0);
    EXPECT_EQ(header.data(Qt::BackgroundRole).value<QBrush>().color(), QColor(220, 220, 220));
    const QModelIndex width = cell("Width");
    EXPECT_EQ(width.sibling(width.row(), 0).data(Qt::WhatsThisRole), "Width");
    EXPECT_EQ(width.data(Qt::UserRole).value<NodeInfo>().node.Get(), m_camera->deviceMap->GetNode("Width"));
    EXPECT_FALSE(model()->flags(width.sibling(width.row(), 0)) & Qt::ItemIsEditable);
}

TEST_F(FeatureTreeTest, ACameraWithoutAReadableModelNameGetsTheStandInTitle) {
    show(makeCamera(category("Root", "Group") + category("Group", "Width") + integer("Width", 0)));
    EXPECT_EQ(rows().front(), "Duskwing S");
}

TEST_F(FeatureTreeTest, ShowsAnInterfaceAndNothing) {
    show(makeCamera());
    m_tree->UpdateTreeViewInterface(Norvane::InterfacePtr(std::make_shared<TestInterface>(
        category("Root", "Info") + category("Info", "Id") + text("Id", "eth0"))));
    EXPECT_EQ(rows(), QStringList({"Info", "-Id=eth0"}));
    EXPECT_EQ(model()->index(0, 0).data(Qt::BackgroundRole).value<QBrush>().color(), QColor(220, 220, 220));
    m_tree->UpdateTreeViewCamera(Norvane::CameraPtr());
    EXPECT_EQ(rows(), QStringList());
    EXPECT_EQ(m_tree->windowTitle(), "Device Features");
}

/// The window does not wait for a camera that takes its time: the rows come when the library has read it.
class SlowCameraTest : public TreeFixture {
protected:
    /// A camera that does not answer before its port is let through.
    void showHeld() {
        auto camera = makeCamera();
        camera->port->hold(true);
        show(std::move(camera));
        EXPECT_EQ(rows(), kHeaders);
    }
    /// Lets the reading end, however it was given up or not, and what it says of that come in.
    void letThrough(TestCamera& camera) {
        camera.port->hold(false);
        Prefetch::AwaitGivenUp();
        QCoreApplication::processEvents();
    }

    const QStringList kHeaders{"Duskwing X", "Transport Layer", "Stream Parameters"};
};

TEST_F(SlowCameraTest, FillsTheTreeWhenItIsRead) {
    showHeld();
    EXPECT_TRUE(labelled("Reading the features of the camera ..."));
    m_tree->OnSortTreeByXML(); // changes nothing
    EXPECT_EQ(rows(), kHeaders);
    m_camera->port->hold(false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell("Height").isValid(); }));
    EXPECT_LE(m_camera->port->mostReads(), 1);
    EXPECT_FALSE(labelled("Reading the features of the camera ..."));
    m_camera->port->setValue(4, 7);
    m_camera->deviceMap->InvalidateNodes();
    QCoreApplication::processEvents();
    EXPECT_EQ(shown("Height"), "7") << "its rows follow the camera";

    showHeld();
    pressButton("actionSortAlpha");
    m_camera->port->hold(false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell("Height").isValid(); }));
    EXPECT_EQ(rows().front(), "Abc=id");
}

/// Nothing here waits for the camera that is held: if it did, the test would not end.
TEST_F(SlowCameraTest, IsGivenUpByAnotherChoice) {
    const auto other = [] {
        return makeCamera(category("Root", "Other") + category("Other", "Offset") + integer("Offset", 0));
    };
    showHeld();
    auto first = m_camera;
    show(other());
    EXPECT_TRUE(cell("Offset").isValid());
    letThrough(*first);
    EXPECT_FALSE(cell("Height").isValid()) << "what was under way is no longer shown";

    showHeld();
    first = m_camera;
    m_tree->UpdateTreeViewCamera({}); // unplugged, or nothing selected
    EXPECT_EQ(rows(), QStringList());
    letThrough(*first);
    EXPECT_EQ(rows(), QStringList());

    showHeld();
    const std::weak_ptr<TestCamera> last = m_camera;
    const auto port = m_camera->port;
    show(other());
    EXPECT_FALSE(last.expired()) << "it is being read";
    port->hold(false);
    Prefetch::AwaitGivenUp();
    EXPECT_TRUE(last.expired());
}

TEST_F(SlowCameraTest, CanBeUnpluggedWhileItIsRead) {
    showHeld();
    // The rows come although the library has no maps any more; then the device list takes the camera away.
    m_camera->unknown = true;
    m_camera->port->hold(false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !labelled("Reading the features of the camera ..."); }));
    EXPECT_FALSE(cell("Height").isValid());
    m_tree->UpdateTreeViewCamera({});
    EXPECT_EQ(rows(), QStringList());
    EXPECT_TRUE(view()->updatesEnabled());

    // Closed and chosen again, it is opened and read anew.
    showHeld();
    const auto camera = m_camera;
    camera->initialized = false;
    camera->port->hold(false);
    show(camera);
    EXPECT_TRUE(camera->initialized);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell("Height").isValid(); }));
}

TEST_F(SlowCameraTest, IsSearchedWithoutTheCameraBefore) {
    show(makeCamera());
    searchBox()->setText("Height");
    EXPECT_TRUE(cell("Height").isValid());
    const std::weak_ptr<TestCamera> before = m_camera;
    auto held = makeCamera();
    held->port->hold(true);
    show(held);
    EXPECT_TRUE(before.expired());
    searchBox()->setText("Hei"); // its categories are gone with it
    EXPECT_FALSE(cell("Height").isValid());
    held->port->hold(false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell("Height").isValid(); })) << "found when it is read";
}

TEST_F(FeatureTreeTest, BrokenMapsLeaveATreeThatWorks) {
    show(std::make_shared<TestCamera>(category("Root", "Loop Width") + category("Loop", "Width Loop") +
                                          integer("Width", 0),
                                      "", text("Root", "no category")));
    EXPECT_TRUE(rows().contains("-Width=0")) << rows().join('\n').toStdString();
    EXPECT_TRUE(view()->updatesEnabled());
}

TEST_F(FeatureTreeTest, SortsByHierarchyAndByAlphabet) {
    show(makeCamera());
    const QStringList hierarchy = rows();
    pressButton("actionSortAlpha");
    EXPECT_EQ(rows(), QStringList({"Abc=id", "AcquisitionMode=Continuous", "Away=0", "Broken",
                                   "DeviceModelName=Duskwing X", "Height=0", "Lost=0", "Width=0"}));
    pressButton("actionSortCategory");
    EXPECT_EQ(rows(), hierarchy);
    pressButton("actionSortAlpha");
    pressButton("actionSortXML");
    EXPECT_EQ(rows(), hierarchy);
    EXPECT_FALSE(view()->isSortingEnabled());
    m_tree->OnButtonGroupClicked(17);
    EXPECT_EQ(rows(), hierarchy);
}

TEST_F(FeatureTreeTest, ExpandsAndCollapsesAndRemembersIt) {
    const Norvane::CameraPtr camera = show(makeCamera());
    view()->collapseAll();
    pressButton("actionExpandTree");
    EXPECT_TRUE(view()->isExpanded(model()->index(0, 0)));
    m_tree->UpdateTreeViewCamera(camera);
    EXPECT_TRUE(view()->isExpanded(model()->index(0, 0))) << "a rebuild keeps the wish";
    pressButton("actionExpandTree");
    EXPECT_FALSE(view()->isExpanded(model()->index(0, 0)));
}

/// Turning to another camera and back registers the callback anew, and the library keeps nothing for it.
TEST_F(FeatureTreeTest, GoingToAndFroBetweenCamerasGathersNothing) {
    const auto first = makeCamera();
    const auto second = makeCamera();
    const auto lastHandle = [] {
        const auto handle =
            Register(makeMap(number("Integer", "Own", "0"), nullptr)->GetNode("Own"), [](INode*) {});
        Deregister(handle);
        return handle;
    };
    show(second);
    show(first);
    const auto before = lastHandle();
    constexpr int kTimes = 10;
    for (int i = 0; i < kTimes; ++i) {
        show(second);
        show(first);
    }
    EXPECT_EQ(lastHandle(), before + 1);
    QSignalSpy updated(m_tree.get(), SIGNAL(NodeUpdated(Norvane::GenApi::INode*)));
    INode* const width = first->deviceMap->GetNode("Width");
    CIntegerPtr(width)->SetValue(640);
    EXPECT_EQ(updated.count(), 1);
    EXPECT_EQ(shown("Width"), "640");
    const auto handle = Register(width, &wFeatureTree::Callback);
    int registrations = -1;
    while (Deregister(handle)) {
        ++registrations;
    }
    EXPECT_EQ(registrations, 1 + kTimes);
}

TEST_F(FeatureTreeTest, AStormOfChangesQueuesOneUpdate) {
    m_tree->UpdateTreeViewCamera(show(makeCamera())); // the same camera again
    QSignalSpy updated(m_tree.get(), SIGNAL(NodeUpdated(Norvane::GenApi::INode*)));
    std::thread library([&] {
        CIntegerPtr width(m_camera->deviceMap->GetNode("Width"));
        for (int i = 1; i <= 500; ++i) {
            width->SetValue(i);
        }
    });
    library.join();
    EXPECT_EQ(updated.count(), 1);
    EXPECT_EQ(shown("Width"), "0") << "a change is shown by the tree's own thread";
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown("Width") == "500"; })) << shown("Width").toStdString();
    std::thread([&] { CIntegerPtr(m_camera->deviceMap->GetNode("Width"))->SetValue(7); }).join();
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown("Width") == "7"; })) << "later changes come through";
}

TEST_F(FeatureTreeTest, TellsOfTheAcquisitionModeWhileItsRowIsShown) {
    show(makeCamera());
    int told = 0;
    Norvane::CameraPtr of;
    QObject::connect(m_tree.get(), &wFeatureTree::AcquisitionModeUpdated,
                     [&](const Norvane::CameraPtr& camera) {
                         ++told;
                         of = camera;
                     });
    CEnumerationPtr mode(m_camera->deviceMap->GetNode("AcquisitionMode"));
    mode->SetIntValue(1);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(of.get(), m_camera.get());
    EXPECT_EQ(cell("AcquisitionMode").data(Qt::EditRole).value<ComboBoxValues>().currentText, "SingleFrame");
    searchBox()->setText("Width");
    mode->SetIntValue(0);
    EXPECT_EQ(told, 1) << "the row is not in the filtered list";
}

TEST_F(FeatureTreeTest, FillingReadsNoRegisterTwice) {
    auto camera = makeCamera();
    show(camera);
    EXPECT_EQ(camera->port->mostReads(), 1);
    EXPECT_EQ(camera->streamPort->mostReads(), 1);
    camera->port->forgetCounts();
    searchBox()->setText("e");
    m_tree->OnSortTreeByAlpha();
    EXPECT_EQ(camera->port->mostReads(), 0) << "what is cached is not read again";
}

TEST_F(FeatureTreeTest, AClickDescribesAndADoubleClickInforms) {
    show(makeCamera());
    const auto labels = [&] {
        QStringList texts;
        for (const QLabel* label : m_tree->findChildren<QLabel*>()) {
            texts << label->text();
        }
        return texts;
    };
    click(cell("Away").sibling(cell("Away").row(), 0));
    EXPECT_TRUE(labels().contains("Away"));
    EXPECT_TRUE(labels().contains("Counts, if n &lt; 5 &amp; more.")) << labels().join('|').toStdString();

    click(cell("Width").sibling(cell("Width").row(), 0));
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {},
                       view()->visualRect(cell("Width").sibling(cell("Width").row(), 0)).center());
    ASSERT_EQ(m_tree->findChildren<wPrmDialog*>().size(), 1);
    EXPECT_FALSE(m_tree->findChild<wPrmDialog*>()->isModal());
    m_tree->OnDoubleClickParam(cell("Away"));
    ASSERT_EQ(m_tree->findChildren<wPrmDialog*>().size(), 1) << "a second dialog takes the first one's place";
    m_tree->OnDoubleClickParam(model()->index(0, 0));
    EXPECT_EQ(m_tree->findChildren<wPrmDialog*>().size(), 1) << "a header is no node";
    delete m_tree->findChild<wPrmDialog*>();
    pressButton("actionSortXML");
    EXPECT_FALSE(labels().contains("Away")) << "a rebuild clears the description";

    view()->expandAll();
    // A machine with much to do has the camera read again after the tree was made.
    ASSERT_TRUE(QTest::qWaitFor([&] { return cell("Away").isValid(); }));
    view()->setCurrentIndex(view()->indexAbove(cell("Away").sibling(cell("Away").row(), 0)));
    QTest::keyClick(view(), Qt::Key_Down);
    EXPECT_TRUE(labels().contains("Away")) << "the keyboard shows the description as a click does";
    QTest::keyClick(view(), Qt::Key_Return, Qt::AltModifier);
    EXPECT_EQ(m_tree->findChildren<wPrmDialog*>().size(), 1) << "and the node's information";
    click(cell("Width"));
    EXPECT_TRUE(labels().contains("Width")) << "a click that opens an editor describes its feature";
}

} // namespace
