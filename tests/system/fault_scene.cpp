#include "tests/system/fault_scene.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include <sys/stat.h>

#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSurplus = 20000;

/// Bytes that mean nothing behind a picture: of a file of boxes, a free one.
Bytes surplusOf(const Bytes& picture) {
  Bytes surplus(kSurplus, 'x');
  const std::string_view second(reinterpret_cast<const char*>(picture.data()) + 4, 4);
  if (second != "ftyp" && second != "jP  ") return surplus;
  const std::array<std::uint8_t, 8> header = {0, 0, kSurplus >> 8, kSurplus & 0xFF, 'f', 'r', 'e', 'e'};
  std::copy(header.begin(), header.end(), surplus.begin());
  return surplus;
}

dev_t deviceOf(const fs::path& folder) {
  struct stat status {};
  return stat(folder.c_str(), &status) == 0 ? status.st_dev : 0;
}

/// A folder on another file system, where there is one.
std::string elsewhere(const std::string& here) {
  for (const fs::path& folder : {fs::temp_directory_path(), fs::path("/dev/shm")}) {
    if (fs::is_directory(folder) && deviceOf(folder) != deviceOf(here)) return folder;
  }
  return here;
}

std::vector<fs::path> leftovers(const std::string& folder) {
  std::vector<fs::path> found;
  for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
    if (!entry->path().filename().native().starts_with(".ostra-")) continue;
    found.push_back(entry->path());
    entry.disable_recursion_pending();
  }
  return found;
}

}  // namespace

FaultScene::FaultScene(const Road& road, const std::string& parent)
    : road_(road),
      parent_(parent),
      home_(road.cacheIsElsewhere ? elsewhere(parent) : parent),
      program_(home_.path()) {
  program_.installModules();
  prepare();
  // The first run of a user does what later ones need not, such as making the cache folder.
  run({});
  prepare();
  old_ = states();
  const FaultedRun clean = run({});
  if (clean.status != 0) throw std::runtime_error("no conversion without a fault: " + clean.errors);
  new_ = states();
  if (new_.destination == old_.destination || !new_.destination)
    throw std::runtime_error("nothing was converted");
  if (!judge(clean).isGood()) throw std::runtime_error("lossy without a fault: " + judge(clean).losses[0]);
}

void FaultScene::prepare() {
  folder_.reset();
  for (const fs::path& left : leftovers(home_.path())) fs::remove_all(left);
  folder_ = std::make_unique<TemporaryFolder>(parent_);
  if (picture_.empty()) {
    makePicture(road_.format + (":" + source()), {"-resize", "40x30!"});
    picture_ = readFile(source());
    // Larger than what replaces it, so that a file that is overwritten is neither old nor new for a while.
    const Bytes surplus = surplusOf(picture_);
    picture_.insert(picture_.end(), surplus.begin(), surplus.end());
  }
  writeFile(source(), picture_);
  markFile(source());
  if (!road_.destinationExists || source() == destination()) return;
  writeFile(destination(), Bytes(kSurplus, 'o'));
  markFile(destination());
}

FaultedRun FaultScene::run(Injection injection) const {
  injection.armedBy = "/" + std::string(road_.source);
  injection.armsInThread = true;
  injection.exchangeIsUnknown = !road_.canExchange;
  return program_.runWithFault({road_.action, source()}, injection);
}

std::vector<std::string> FaultScene::calls(bool all) {
  prepare();
  Injection injection;
  injection.countsAllCalls = all;
  return run(injection).calls;
}

Judgement FaultScene::judge(const std::optional<FaultedRun>& ended, bool lasting) const {
  Judgement judgement;
  const States now = states();
  judgement.isNew = now.destination == new_.destination;
  if (source() != destination() && now.source != old_.source)
    judgement.losses.push_back(std::string(road_.source) + ": " + differenceOf(now.source, old_.source));
  if (!judgement.isNew && now.destination != old_.destination) {
    const std::string words = std::string(road_.destination) + ": neither the old one (" +
                              differenceOf(now.destination, old_.destination) + ") nor the new one (" +
                              differenceOf(now.destination, new_.destination) + ")";
    judgement.isNewNamePartial = !road_.destinationExists;
    if (road_.destinationExists) judgement.losses.push_back(words);
  }
  // What was there must keep all that its user gave it.
  if (road_.destinationExists && now.destination && old_.destination) {
    FileState marked = *old_.destination;
    marked.bytes = now.destination->bytes;
    if (marked != *now.destination)
      judgement.losses.push_back(std::string(road_.destination) + ": " +
                                 differenceOf(now.destination, marked));
  }
  if (ended) judgeEnd(*ended, lasting, judgement);
  return judgement;
}

void FaultScene::judgeEnd(const FaultedRun& ended, bool lasting, Judgement& judgement) const {
  const auto lie = [&](const std::string& words) { judgement.untruths.push_back(words); };
  if (ended.status < 0 || ended.status > 2) lie("ended with status " + std::to_string(ended.status));
  if (ended.status == 0 && !judgement.isNew) lie("success, but not the new picture");
  if (ended.status != 0 && ended.errors.empty()) lie("failure without a word");
  // One call that fails is no reason to leave half a file; if all do, nothing can be removed either.
  if (judgement.isNewNamePartial && !lasting) lie("half a new file was left");
}

int FaultScene::strays() const {
  return static_cast<int>(leftovers(home_.path()).size() + leftovers(folder_->path()).size());
}

}  // namespace ostra::test
