#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/integration/home_folder.h"
#include "tests/support/program.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

using test::ProgramResult;
using testing::HasSubstr;

/// The program as its user runs it, in a home of the test's own.
class IntegrateProgramTest : public testing::Test {
 protected:
  ProgramResult ostra(std::vector<std::string> arguments, const std::string& locale = "C.UTF-8") {
    arguments.insert(arguments.begin(), OSTRA_PROGRAM);
    test::ProgramOptions options;
    options.environment = home_.environment(locale);
    return test::runProgram(arguments, options);
  }
  test::HomeFolder home_;
};

TEST_F(IntegrateProgramTest, WritesEntriesThatRunItAndTakesThemAway) {
  home_.install("dolphin");
  home_.write(home_.home("/.config/Thunar/uca.xml"), "<actions></actions>");
  const auto before = home_.snapshot();
  ASSERT_EQ(ostra({"integrate"}).status, 0);
  const std::string entry = home_.home("/.local/share/kio/servicemenus/org.ostra.Ostra.desktop");
  EXPECT_THAT(home_.read(entry),
              HasSubstr("Exec=" + fs::canonical(OSTRA_PROGRAM).string() + " --ui=desktop"));
  ASSERT_EQ(ostra({"integrate", "--remove"}).status, 0);
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateProgramTest, ChangesNothingInARehearsal) {
  home_.install("dolphin");
  const ProgramResult result = ostra({"integrate", "--dry-run"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("would write " + home_.home("/.local/share/kio/servicemenus/")));
  EXPECT_TRUE(home_.snapshot().empty());
}

// The script is run as file managers run scripts: in the folder of the files, by their names, with their
// paths in the environment.
TEST_F(IntegrateProgramTest, WritesScriptsThatHandOverEveryName) {
  home_.install("nautilus");
  ASSERT_EQ(ostra({"integrate"}, "de_DE.UTF-8").status, 0);
  const std::string script = home_.home("/.local/share/nautilus/scripts/Bild umwandeln/Farben umkehren");
  ASSERT_TRUE(fs::exists(script));
  const std::string pictures = home_.home("/pictures");
  fs::create_directories(pictures);

  const auto run = [&](const std::string& words, const std::string& paths) {
    test::ProgramOptions options;
    options.environment = {"HOME=" + home_.home(), "NAUTILUS_SCRIPT_SELECTED_FILE_PATHS=" + paths,
                           "DISPLAY=", "WAYLAND_DISPLAY=", "XDG_CACHE_HOME=" + home_.home("/cache")};
    return test::runProgram({"sh", "-c", "cd '" + pictures + "' && exec '" + script + "' " + words}, options)
        .errors;
  };
  // None of them is there, so each is named once.
  const std::string whole =
      run("'a b.png' '-x.png'", pictures + "/elsewhere/a b.png\n" + pictures + "/elsewhere/-x.png\n");
  EXPECT_THAT(whole, HasSubstr("  a b.png: "));
  EXPECT_THAT(whole, HasSubstr("  -x.png: "));
  const std::string torn = run("\"$(printf 'c\\nd.png')\"", pictures + "/c\nd.png\n");
  EXPECT_THAT(torn, HasSubstr("  c\n  d.png: "));
}

TEST_F(IntegrateProgramTest, TellsWhatItCannotDo) {
  EXPECT_EQ(ostra({"integrate"}).status, 2);
  EXPECT_EQ(ostra({"integrate", "x"}).status, 2);
  EXPECT_EQ(ostra({"--dry-run", "list"}).status, 2);
  home_.install("thunar");
  home_.write(home_.home("/.config/Thunar/uca.xml"), "<actions>");
  const ProgramResult torn = ostra({"integrate"});
  EXPECT_EQ(torn.status, 1);
  EXPECT_THAT(torn.errors, HasSubstr("uca.xml” stays as it is"));
}

}  // namespace
}  // namespace ostra
