#include "TestMap.h"

namespace Norvane::GenApi {
namespace {

TEST(Smoke, Basics) {
    TestMap t(Reg("R", 0) + R"(
<Integer Name="I"><pValue>R</pValue><Min>2</Min><Max>100</Max><Inc>2</Inc><Unit>us</Unit></Integer>
<IntSwissKnife Name="K"><pVariable Name="A">I</pVariable><Formula>A*2+1</Formula></IntSwissKnife>
<Float Name="F"><pValue>C</pValue></Float>
<Converter Name="C"><FormulaTo>FROM*10</FormulaTo><FormulaFrom>TO/10</FormulaFrom><pValue>R</pValue></Converter>
<Enumeration Name="E"><EnumEntry Name="A"><Value>0</Value></EnumEntry><EnumEntry Name="B"><Value>10</Value></EnumEntry><pValue>R</pValue></Enumeration>
)");
    t.Int("I")->SetValue(10);
    EXPECT_EQ(t.port->Peek(0), 10u);
    EXPECT_EQ(t.Int("K")->GetValue(), 21);
    EXPECT_EQ(t.Float("F")->GetValue(), 1.0);
    EXPECT_EQ(t.Float("F")->GetMax(), 429496729.5);
    EXPECT_EQ(t.Enum("E")->ToString(), gcstring("B"));
    EXPECT_EQ(ErrorOf([&] { t.Int("I")->SetValue(1); }), "I: 1 is below the minimum 2 us");
    const int reads = t.port->reads;
    t.Int("K")->GetValue();
    EXPECT_EQ(t.port->reads, reads);
}

} // namespace
} // namespace Norvane::GenApi
