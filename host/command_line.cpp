#include "host/command_line.h"

#include <algorithm>
#include <map>

#include <CLI/CLI.hpp>

#include "host/usage_error.h"

namespace ostra {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kSeeHelp = " See “ostra --help”.";

/// The options' texts as the parser finds them, and the words between them.
struct Parsed {
  std::string userInterface = "auto";
  std::optional<std::string> bundle, filesFrom, profile;
  bool verbose = false, version = false, help = false, remove = false, isRehearsal = false;
  Words words;
};

void addText(CLI::App& app, const char* name, std::optional<std::string>& text) {
  app.add_option_function<std::string>(name, [&text](const std::string& given) { text = given; });
}

// The library takes words apart that look like its lists or options, so it is shown no word behind `--` and
// gives back all others as it found them.
Parsed parseOptions(const Words& arguments) {
  Parsed parsed;
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("--ui", parsed.userInterface);
  addText(app, "--bundle", parsed.bundle);
  addText(app, "--files-from", parsed.filesFrom);
  addText(app, "--profile", parsed.profile);
  app.add_flag("--verbose", parsed.verbose);
  app.add_flag("--remove", parsed.remove);
  app.add_flag("--dry-run", parsed.isRehearsal);
  app.add_flag("--version", parsed.version);
  app.add_flag("--help", parsed.help);

  const auto end = std::find(arguments.begin(), arguments.end(), "--");
  Words options(arguments.begin(), end);
  std::reverse(options.begin(), options.end());
  try {
    app.parse(options);
  } catch (const CLI::ParseError& failure) {
    throw UsageError(std::string(failure.what()) + "." + kSeeHelp);
  }
  parsed.words = app.remaining();
  if (end != arguments.end()) parsed.words.insert(parsed.words.end(), end + 1, arguments.end());
  return parsed;
}

void refuseUnknownOptions(const Words& arguments, const Words& words) {
  const auto end = std::find(arguments.begin(), arguments.end(), "--");
  for (const std::string& word : words) {
    if (word.size() < 2 || word[0] != '-') continue;
    if (std::find(arguments.begin(), end, word) == end) continue;
    throw UsageError("There is no option “" + word + "”." + kSeeHelp);
  }
}

UserInterfaceChoice userInterfaceNamed(const std::string& name) {
  static const std::map<std::string, UserInterfaceChoice> choices{{"auto", UserInterfaceChoice::automatic},
                                                                  {"desktop", UserInterfaceChoice::desktop},
                                                                  {"terminal", UserInterfaceChoice::terminal},
                                                                  {"none", UserInterfaceChoice::none}};
  const auto found = choices.find(name);
  if (found == choices.end())
    throw UsageError("--ui is auto, desktop, terminal or none, not “" + name + "”.");
  return found->second;
}

CommandLine conversion(const Parsed& parsed) {
  CommandLine line;
  line.bundle = parsed.bundle;
  line.files = parsed.words;
  line.filesFrom = parsed.filesFrom;
  line.profile = parsed.profile;
  line.userInterface = userInterfaceNamed(parsed.userInterface);
  line.verbose = parsed.verbose;
  if (line.bundle) return line;
  if (line.files.empty()) throw UsageError(std::string("Say which action to perform.") + kSeeHelp);
  line.action = line.files.front();
  line.files.erase(line.files.begin());
  return line;
}

CommandLine commandOnly(CommandLine::Command command) {
  CommandLine line;
  line.command = command;
  return line;
}

/// The command that a word in the action's place stands for, if it is none.
std::optional<CommandLine::Command> commandNamed(const std::string& word) {
  if (word == "list") return CommandLine::Command::list;
  if (word == "profiles") return CommandLine::Command::profiles;
  if (word == "formats") return CommandLine::Command::formats;
  if (word == "integrate") return CommandLine::Command::integrate;
  return std::nullopt;
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
  const Parsed parsed = parseOptions(arguments);
  if (parsed.help) return commandOnly(CommandLine::Command::help);
  if (parsed.version) return commandOnly(CommandLine::Command::version);
  refuseUnknownOptions(arguments, parsed.words);
  CommandLine line = conversion(parsed);
  const auto command = commandNamed(line.action);
  if (command != CommandLine::Command::integrate && (parsed.remove || parsed.isRehearsal)) {
    throw UsageError("--remove and --dry-run are for “ostra integrate” only.");
  }
  if (!command) return line;
  if (!line.files.empty()) throw UsageError("“ostra " + line.action + "” takes no further words.");
  if (line.profile) throw UsageError("“ostra " + line.action + "” takes no --profile.");
  CommandLine only = commandOnly(*command);
  only.remove = parsed.remove;
  only.isRehearsal = parsed.isRehearsal;
  return only;
}

std::string helpText() {
  return R"(Converts pictures in place and keeps their metadata.

  ostra ACTION FILE...         performs an action on some files
  ostra --bundle DIR FILE...   performs the action of a bundle
  ostra list                   lists the actions
  ostra profiles               lists the profiles that convert-color-profile
                               offers; an empty line parts ours from the
                               installed ones
  ostra formats                lists the formats of pictures, a line each, the
                               fields separated by tabs
  ostra integrate              puts the actions into the menus of the file
                               managers that are installed, for this user
    --remove                   takes them away again
    --dry-run                  tells what would be written or removed

  --profile NAME        answers convert-color-profile, which asks otherwise
  --files-from=FILE|-   reads further paths, separated by NUL, from a file or
                        from standard input
  --ui=auto|desktop|terminal|none
                        where failures are shown and questions are put
  --verbose             writes the log's lines to standard error too
  --version, --help     prints the version, or this text, and ends
  --                    what follows are names, even with a dash in front

The status is 0 when every picture was converted, 1 when some failed, 2 when
nothing could be started, 130 when the user cancelled, 128+n after signal n.
)";
}

}  // namespace ostra
