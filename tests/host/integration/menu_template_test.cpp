#include "host/integration/menu_template.h"

#include <gtest/gtest.h>

#include "host/usage_error.h"

namespace ostra {
namespace {

TemplateValues values() {
  TemplateValues gray{{{"NAME", {"Gray", {{"de", "Grau"}, {"fr", "Gris"}}}}, {"TYPE", {"image", {}}}}, {}};
  TemplateValues plain{{{"NAME", {"Plain", {}}}, {"TYPE", {"image", {}}}}, {}};
  TemplateValues menu{{{"TYPE", {"image", {}}}}, {gray, plain}};
  return menu;
}

TEST(MenuTemplate, PutsTextsInThePlaceOfNames) {
  EXPECT_EQ(fillTemplate("a @TYPE@ b@TYPE@\n\nc\n", values()), "a image bimage\n\nc\n");
  EXPECT_EQ(fillTemplate("\"$@@\" @TYPE@", values()), "\"$@\" image\n");
}

TEST(MenuTemplate, RepeatsALineForEachLanguageOfItsTexts) {
  const TemplateValues gray = values().entries[0];
  EXPECT_EQ(fillTemplate("Name=@NAME@\nName[@LANGUAGE@]=@NAME@ (@TYPE@)\n", gray),
            "Name=Gray\nName[de]=Grau (image)\nName[fr]=Gris (image)\n");
  EXPECT_EQ(fillTemplate("Name[@LANGUAGE@]=@TYPE@\n", gray), "");
}

TEST(MenuTemplate, RepeatsLinesForEachEntry) {
  EXPECT_EQ(fillTemplate("first\n@entries@\n[@NAME@]\nName[@LANGUAGE@]=@NAME@\n@end@\nlast\n", values()),
            "first\n[Gray]\nName[de]=Grau\nName[fr]=Gris\n[Plain]\nlast\n");
}

TEST(MenuTemplate, LeavesItsRemarksOut) { EXPECT_EQ(fillTemplate("@# @odd\na\n", values()), "a\n"); }

TEST(MenuTemplate, RefusesWhatItDoesNotUnderstand) {
  for (const char* text : {"@WHAT@", "a @TYPE", "@entries@\n@NAME@\n", "Name[@LANGUAGE@]=@WHAT@"}) {
    EXPECT_THROW(fillTemplate(text, values()), UsageError) << text;
  }
  EXPECT_THROW(fillTemplateFile("/nowhere", "a.in", values()), UsageError);
}

// What a text says is never looked at again.
TEST(MenuTemplate, DoesNotTakeTextsForNames) {
  const TemplateValues odd{{{"A", {"@B@", {}}}, {"B", {"b", {}}}}, {}};
  EXPECT_EQ(fillTemplate("@A@\n", odd), "@B@\n");
}

}  // namespace
}  // namespace ostra
