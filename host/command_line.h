#pragma once
#include <optional>
#include <string>
#include <vector>

namespace ostra {

enum class UserInterfaceChoice { automatic, desktop, terminal, none };

/// What the user asked for. For a conversion either `action` or `bundle` is given; the files may be none.
struct CommandLine {
  enum class Command { convert, list, profiles, formats, integrate, help, version };

  Command command = Command::convert;
  std::string action;
  std::optional<std::string> bundle;
  std::vector<std::string> files;
  /// A file with further paths; "-" is standard input.
  std::optional<std::string> filesFrom;
  /// The answer to the panel of the profile conversion.
  std::optional<std::string> profile;
  UserInterfaceChoice userInterface = UserInterfaceChoice::automatic;
  bool verbose = false;
  /// For `integrate`: take the entries away; only tell what would be done.
  bool remove = false, isRehearsal = false;
};

/// Reads the arguments after the program's name. Words after `--` are never options. Throws `UsageError`.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// What `--help` prints.
std::string helpText();

}  // namespace ostra
