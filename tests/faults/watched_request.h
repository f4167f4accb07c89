#pragma once
#include <chrono>
#include <string>
#include <vector>

namespace ostra::test {

/// How one file of a request ended, in the program's own words.
struct FileEnd {
  enum class Kind { none, converted, refused };
  Kind kind = Kind::none;
  std::string written;  // the name that was written
  std::string reason;   // of a refusal
  bool decoderCrashed = false;
  bool decoderWasForbidden = false;
};

struct RequestEnd {
  int status = -1;  // exit status, or 128 + signal
  bool hung = false;
  /// Of each file of the request, in its order. When the program ends before its time, the first one of kind
  /// `none` is the one that it had in work.
  std::vector<FileEnd> files;
  /// The names that were told as failed at the end.
  std::vector<std::string> toldAsFailed;
  /// Processes that the program started and that outlived it.
  int leftBehind = 0;
  std::string errors;
};

/// One run of the program over many files, followed file by file through the lines of its log.
struct WatchedRequest {
  std::string program;
  std::vector<std::string> environment;
  std::string action;
  std::string folder;
  std::vector<std::string> names;  // in `folder`, each once

  /// A program that finishes no file for so long is ended.
  RequestEnd run(std::chrono::seconds patience) const;
};

}  // namespace ostra::test
