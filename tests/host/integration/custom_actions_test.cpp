#include "host/integration/custom_actions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ostra {
namespace {

using testing::HasSubstr;

std::string action(const std::string& identifier, const std::string& name) {
  return "<action>\n\t<name>" + name + "</name>\n\t<unique-id>" + identifier + "</unique-id>\n</action>\n";
}
std::string own(const std::string& name) { return action("org.ostra.Ostra-" + name, name); }

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kUsers = action("1700000000000000-1", "Terminal");

/// The sentence that refuses a list, or "taken".
std::string refusal(const std::string& list) {
  try {
    withCustomActions(list, {own("a")});
    return "taken";
  } catch (const CustomActionsError& failure) {
    return failure.what();
  }
}

TEST(CustomActions, AreAddedBehindAllOthers) {
  EXPECT_EQ(withCustomActions(kHead + "<actions>\n" + kUsers + "</actions>\n", {own("a"), own("b")}),
            kHead + "<actions>\n" + kUsers + own("a") + own("b") + "</actions>\n");
}

TEST(CustomActions, LeaveNoTraceWhenTheyAreTakenAway) {
  for (const std::string& list : {
           kHead + "<actions>\n" + kUsers + "</actions>\n",
           kHead + "<actions></actions>",
           kHead + "<actions/>\n",
           kHead + "<actions  />",
           kHead + "<actions>\n\n\n</actions>\n\n<!-- </actions> is not the end -->",
           kHead + "<!-- <actions> --><actions >" + kUsers + "<!-- mine -->\t</actions\n>\r\n",
           kHead + "<actions>\r\n\t<action><name>A &amp; B</name></action>  </actions>",
           kHead + "<!DOCTYPE actions [\n<!ELEMENT action (icon|name)*>\n]>\n<actions>" + kUsers +
               "</actions>",
           std::string("\xEF\xBB\xBF<actions>") + kUsers + "</actions>",
           kHead + "<actions><action><command><![CDATA[</action></actions>]]></command></action></actions>",
       }) {
    const std::string with = withCustomActions(list, {own("a"), own("b")});
    EXPECT_THAT(with, HasSubstr("org.ostra.Ostra-b")) << list;
    EXPECT_EQ(withCustomActions(with, {own("a"), own("b")}), with) << list;
    EXPECT_EQ(withoutCustomActions(with), list);
    EXPECT_EQ(withoutCustomActions(list), list);
  }
}

TEST(CustomActions, TakeThePlaceOfFormerOnes) {
  const std::string list = "<actions>\n" + own("old") + kUsers + own("b") + "</actions>\n";
  EXPECT_EQ(withCustomActions(list, {own("a"), own("b")}),
            "<actions>\n" + own("a") + own("b") + kUsers + "</actions>\n");
}

// Thunar writes the whole list anew whenever the user edits it.
TEST(CustomActions, AreKnownAfterTheListWasWrittenAnew) {
  const std::string list =
      "<actions><action><unique-id>org.ostra.Ostra-a</unique-id></action>" + kUsers + "</actions>";
  EXPECT_EQ(withoutCustomActions(list), "<actions>" + kUsers + "</actions>");
}

TEST(CustomActions, OfOthersAreNeverTakenForOurs) {
  const std::string list = "<actions>" + action("org.ostra", "a") + action("x-org.ostra.Ostra-a", "b") +
                           "<action><name>org.ostra.Ostra-c</name></action></actions>";
  EXPECT_EQ(withoutCustomActions(list), list);
}

TEST(CustomActions, AreNotAddedToWhatIsNoList) {
  EXPECT_THAT(refusal(""), HasSubstr("XML"));
  EXPECT_THAT(refusal("<actions><action></actions>"), HasSubstr("XML"));
  EXPECT_THAT(refusal(kHead + "<actions>" + kUsers), HasSubstr("XML"));
  EXPECT_THAT(refusal("<other></other>"), HasSubstr("no list"));
  EXPECT_THAT(refusal("just text"), HasSubstr(""));
  EXPECT_THAT(refusal("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><actions></actions>"),
              HasSubstr("UTF-8"));
  EXPECT_NE(refusal("just text"), "taken");
}

// An action of ours that somebody put a comment with an end tag into: the edit would tear the list.
TEST(CustomActions, AreNotTakenOutOfAListThatWouldBeTorn) {
  const std::string list =
      "<actions><action><!-- </action> --><unique-id>org.ostra.Ostra-a</unique-id></action></actions>";
  EXPECT_THROW(withoutCustomActions(list), CustomActionsError);
}

}  // namespace
}  // namespace ostra
