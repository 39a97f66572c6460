#include "TreeFixture.h"

using namespace Norvane::GenApi;

namespace {

const std::string kDevice =
    category("Root", "ImageControl") + category("ImageControl", "Width WidthMax Offset Lower") +
    category("Lower", "Height") + integer("Width", 0) + integer("WidthMax", 4) + integer("Height", 8) +
    "<Integer Name=\"Offset\"><DisplayName>Image Offset X</DisplayName><Value>3</Value></Integer>";
const std::string kStream = category("Root", "Counters") + category("Counters", "Width Lost") +
                            integer("Width", 0) + integer("Lost", 4);

class FeatureSearchTest : public TreeFixture {
protected:
    FeatureSearchTest() {
        show(std::make_shared<TestCamera>(kDevice, category("Root", ""), kStream));
        m_all = rows();
    }
    QStringList found(const char* text) {
        searchBox()->setText(text);
        QStringList names = rows();
        names.sort();
        return names;
    }
    QStringList m_all;
};

TEST_F(FeatureSearchTest, MatchesNamesAndShownNamesInAnyCase) {
    EXPECT_EQ(found("wIDTHm"), QStringList({"WidthMax=0"}));
    EXPECT_EQ(found("offset"), QStringList({"Image Offset X=3"}));
    EXPECT_EQ(found("^width$"), QStringList({"Width=0", "Width=0"})) << "one row a node map";
    EXPECT_EQ(found("^(Lost|Height)$"), QStringList({"Height=0", "Lost=0"}));
    EXPECT_EQ(found("width max # the largest"), QStringList({"WidthMax=0"})) << "blanks and comments";
    for (const char* unmatched : {"nothing like that", "Control", "^Lower$", "Stream"}) {
        EXPECT_EQ(found(unmatched), QStringList()) << unmatched << " is no feature";
    }
}

TEST_F(FeatureSearchTest, AnInvalidPatternDisablesTheViewUntilItIsMended) {
    EXPECT_EQ(found("(width"), QStringList());
    EXPECT_FALSE(view()->isEnabled());
    EXPECT_EQ(found("(width)max"), QStringList({"WidthMax=0"}));
    EXPECT_TRUE(view()->isEnabled());
    found("(");
    searchBox()->clear();
    EXPECT_TRUE(view()->isEnabled());
    EXPECT_EQ(rows(), m_all);
}

TEST_F(FeatureSearchTest, ASearchOutlivesSortingAndAChangeOfDevice) {
    EXPECT_EQ(found("max"), QStringList({"WidthMax=0"}));
    pressButton("actionSortAlpha");
    EXPECT_EQ(rows(), QStringList({"WidthMax=0"}));
    show(std::make_shared<TestCamera>(
        category("Root", "G") + category("G", "GainMax") + integer("GainMax", 0), "", ""));
    EXPECT_EQ(rows(), QStringList({"GainMax=0"}));
    m_tree->UpdateTreeViewInterface(Norvane::InterfacePtr(std::make_shared<TestInterface>(
        category("Root", "G") + category("G", "MaxSpeed") + text("MaxSpeed", "1"))));
    EXPECT_EQ(rows(), QStringList({"MaxSpeed=1"}));
    m_tree->UpdateTreeViewCamera(Norvane::CameraPtr());
    EXPECT_EQ(searchBox()->text(), "") << "nothing shown, nothing searched";
}

TEST_F(FeatureSearchTest, LeavingASearchShowsTheHierarchy) {
    pressButton("actionSortAlpha");
    found("width");
    searchBox()->clear();
    EXPECT_EQ(rows(), m_all);
    EXPECT_EQ(view()->model(), m_tree->GetCurrentModel());
    EXPECT_FALSE(m_tree->findChild<QToolButton*>("actionSortAlpha")->isChecked());
}

} // namespace
