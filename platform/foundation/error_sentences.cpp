#include "platform/foundation/error_sentences.h"

#include <fmt/format.h>

#include "platform/foundation/error.h"

namespace ostra {
namespace {

/// The sentences of one code: one that names the file, and one for an unknown file. {f}, {d} and {v} are the
/// file, its folder and the volume.
struct Sentences {
  std::int64_t code;
  const char* named;
  const char* nameless;
};

// clang-format off
constexpr Sentences kSentences[] = {
    {NSFileNoSuchFileError,
     "The file “{f}” doesn’t exist.",
     "The file doesn’t exist."},
    {NSFileReadUnknownError,
     "The file “{f}” couldn’t be opened.",
     "The file couldn’t be opened."},
    {NSFileReadNoPermissionError,
     "The file “{f}” couldn’t be opened because you don’t have permission to view it.",
     "The file couldn’t be opened because you don’t have permission to view it."},
    {NSFileReadCorruptFileError,
     "The file “{f}” couldn’t be opened because it isn’t in the correct format.",
     "The file couldn’t be opened because it isn’t in the correct format."},
    {NSFileReadNoSuchFileError,
     "The file “{f}” couldn’t be opened because there is no such file.",
     "The file couldn’t be opened because it doesn’t exist."},
    {NSFileWriteUnknownError,
     "The file “{f}” couldn’t be saved in the folder “{d}”.",
     "The file couldn’t be saved."},
    {NSFileWriteNoPermissionError,
     "You don’t have permission to save the file “{f}” in the folder “{d}”.",
     "The file couldn’t be saved because you don’t have permission."},
    {NSFileWriteInvalidFileNameError,
     "The item couldn’t be saved because the file name “{f}” is invalid.",
     "The item couldn’t be saved because the file name is invalid."},
    {NSFileWriteFileExistsError,
     "The file “{f}” couldn’t be saved in the folder “{d}” because a file with the same name already exists.",
     "The file couldn’t be saved because a file with the same name already exists."},
    {NSFileWriteOutOfSpaceError,
     "You can’t save the file “{f}” because there isn’t enough space.",
     "The file couldn’t be saved because there isn’t enough space."},
    {NSFileWriteVolumeReadOnlyError,
     "You can’t save the file “{f}” because the volume is read only.",
     "The file couldn’t be saved because the volume is read only."},
    {NSUserCancelledError,
     "The operation was cancelled.",
     "The operation was cancelled."},
};

/// Where the name of the volume is known too.
constexpr Sentences kVolumeSentences[] = {
    {NSFileWriteOutOfSpaceError,
     "You can’t save the file “{f}” because the volume “{v}” is out of space.", nullptr},
    {NSFileWriteVolumeReadOnlyError,
     "You can’t save the file “{f}” because the volume “{v}” is read only.", nullptr},
};
// clang-format on

template <std::size_t N>
const Sentences* find(const Sentences (&table)[N], std::int64_t code) {
  for (const Sentences& row : table) {
    if (row.code == code) return &row;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> cocoaSentence(std::int64_t code, const SentenceNames& names) {
  const Sentences* sentences = find(kSentences, code);
  if (sentences == nullptr) return std::nullopt;
  if (names.file.empty()) return sentences->nameless;
  const Sentences* ofVolume = names.volume.empty() ? nullptr : find(kVolumeSentences, code);
  return fmt::format(fmt::runtime(ofVolume != nullptr ? ofVolume->named : sentences->named),
                     fmt::arg("f", names.file), fmt::arg("d", names.folder), fmt::arg("v", names.volume));
}

std::string genericSentence(std::string_view domain, std::int64_t code,
                            const std::optional<std::string>& reason) {
  if (reason) return "The operation couldn’t be completed. " + *reason;
  return fmt::format("The operation couldn’t be completed. ({} error {}.)",
                     domain == NSCocoaErrorDomain ? "Cocoa" : domain, code);
}

}  // namespace ostra
