#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/matrices.h"
#include "tests/faults/tally.h"
#include "tests/support/fault_injector.h"
#include "tests/support/temporary_folder.h"
#include "tests/system/file_state.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

/// Another program that writes a picture over itself. An argument "@" stands for the picture.
struct Peer {
  std::string program;
  std::vector<std::string> arguments;
};

/// This program itself comes first, to be compared.
std::vector<Peer> peers(const std::string& self) {
  return {{self, {"invert", "@"}},
          {"jpegtran", {"-rotate", "180", "-outfile", "@", "@"}},
          {"exiftool", {"-q", "-overwrite_original_in_place", "-Artist=Somebody", "@"}},
          {"mogrify", {"-negate", "@"}},
          {"exiv2", {"-M", "set Exif.Image.Artist Somebody", "@"}}};
}

std::string nameOf(const Peer& peer) { return peer.program.substr(peer.program.rfind('/') + 1); }

class PeerScene {
 public:
  PeerScene(const Peer& peer, const InstalledProgram& self, const std::string& parent)
      : peer_(peer), self_(self), parent_(parent) {
    const TemporaryFolder folder;
    makePicture("JPEG:" + folder.path("a.jpg"),
                {"-resize", "1200x900!", "-attenuate", "0.3", "+noise", "gaussian", "-quality", "92"});
    picture_ = readFile(folder.path("a.jpg"));
  }

  void prepare() {
    folder_.reset();
    folder_ = std::make_unique<TemporaryFolder>(parent_);
    writeFile(path(), picture_);
    markFile(path());
  }
  FaultedRun run(const std::optional<Fault>& fault) const {
    Injection injection;
    injection.armedBy = "/a.jpg";
    injection.countsAllCalls = true;
    injection.fault = fault;
    std::vector<std::string> words = {peer_.program};
    for (const std::string& argument : peer_.arguments) words.push_back(argument == "@" ? path() : argument);
    ProgramOptions options;
    options.environment = self_.environment();
    return runWithFault(words, injection, options);
  }
  std::optional<FileState> state() const { return fileStateAt(path()); }

 private:
  std::string path() const { return folder_->path("a.jpg"); }

  const Peer& peer_;
  const InstalledProgram& self_;
  std::string parent_;
  Bytes picture_;
  std::unique_ptr<TemporaryFolder> folder_;
};

bool runPeer(const Peer& peer, const InstalledProgram& self, const std::string& folder) {
  Tally tally("peer-kill", nameOf(peer));
  PeerScene scene(peer, self, folder);
  scene.prepare();
  const auto old = scene.state();
  const FaultedRun clean = scene.run(std::nullopt);
  const auto fresh = scene.state();
  if (clean.status != 0 || !fresh || fresh->bytes == old->bytes) {
    std::fprintf(stderr, "skipped: %s does not do its work here: %s\n", nameOf(peer).c_str(),
                 clean.errors.c_str());
    return false;
  }
  for (std::size_t call = 0; call < clean.calls.size(); ++call) {
    scene.prepare();
    Fault death;
    death.at = call;
    if (!scene.run(death).struck) continue;
    tally.count();
    const auto now = scene.state();
    const bool isNew = now && now->bytes == fresh->bytes;
    if (isNew) tally.countNew();
    // Bytes alone: what a program does to mode and owner when all goes well is no loss by a death.
    if (!isNew && (!now || now->bytes != old->bytes)) tally.lost("call " + std::to_string(call), "torn");
  }
  tally.print();
  return tally.isGood();
}

}  // namespace

bool runPeers(const std::string& folder) {
  const InstalledProgram self;
  bool areWeGood = false;
  for (const Peer& peer : peers(self.path())) {
    if (peer.program == self.path()) {
      areWeGood = runPeer(peer, self, folder);
    } else if (haveProgram(peer.program)) {
      runPeer(peer, self, folder);
    } else {
      std::fprintf(stderr, "skipped: %s is not installed\n", peer.program.c_str());
    }
  }
  return areWeGood;
}

}  // namespace ostra::test
