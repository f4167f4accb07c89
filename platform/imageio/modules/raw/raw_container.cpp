#include "platform/imageio/modules/raw/raw_container.h"

#include <algorithm>
#include <utility>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/signatures.h"

namespace ostra {
namespace {

struct Signature {
  bool (*matches)(FileBytes head);
  RawKind kind;
  const char* type;
};
constexpr Signature kSignatures[] = {
    {matchesCr2, RawKind::cr2, "com.canon.cr2-raw-image"},
    {matchesCr3, RawKind::cr3, "com.canon.cr3-raw-image"},
    {matchesCrw, RawKind::crw, "com.canon.crw-raw-image"},
    {matchesMrw, RawKind::mrw, "com.konicaminolta.raw-image"},
    {matchesOrf, RawKind::orf, "com.olympus.raw-image"},
    {matchesRaf, RawKind::raf, "com.fuji.raw-image"},
    {matchesRw2, RawKind::rw2, "com.panasonic.rw2-raw-image"},
    {matchesTiffRaw, RawKind::tiff, ""},
};

struct Maker {
  std::string_view make, model;
  const char* type;
};
// How the names of makers and models begin, in capitals.
constexpr Maker kMakers[] = {
    {"NIKON", "COOLPIX", "com.nikon.nrw-raw-image"},
    {"NIKON", "", "com.nikon.raw-image"},
    {"SONY", "DSC-F828", "com.sony.raw-image"},
    {"SONY", "DSC-R1", "com.sony.sr2-raw-image"},
    {"SONY", "", "com.sony.arw-raw-image"},
    {"CANON", "", "com.canon.tif-raw-image"},
    {"PENTAX", "", "com.pentax.raw-image"},
    {"RICOH", "", "com.pentax.raw-image"},
    {"SAMSUNG", "", "com.samsung.raw-image"},
    {"HASSELBLAD", "", "com.hasselblad.3fr-raw-image"},
    {"KODAK", "", "com.kodak.raw-image"},
    {"EASTMAN KODAK", "", "com.kodak.raw-image"},
    {"SEIKO EPSON", "", "com.epson.raw-image"},
    {"PHASE ONE", "", "com.phaseone.raw-image"},
    {"LEAF", "", "com.leafamerica.raw-image"},
    {"LEICA", "", "com.leica.raw-image"},
    {"PANASONIC", "", "com.panasonic.raw-image"},
};

bool beginsWith(std::string_view text, std::string_view capitals) {
  const auto same = [](char capital, char c) {
    return capital == (c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
  };
  return text.size() >= capitals.size() && std::equal(capitals.begin(), capitals.end(), text.begin(), same);
}

std::string typeOfTiff(const RawDirectories& directories) {
  if (directories.isDng) return "com.adobe.raw-image";
  for (const Maker& maker : kMakers) {
    if (beginsWith(directories.make, maker.make) && beginsWith(directories.model, maker.model))
      return maker.type;
  }
  return "public.camera-raw-image";
}

bool isRaw(const RawDirectory& directory) { return directory.isRaw(); }

/// The head tells where the values of the sensor lie.
bool isWholeFujifilm(FileBytes file) {
  constexpr std::size_t kSensor = 100;
  if (file.size() < kSensor + 8) return false;
  const std::size_t offset = bigEndian32(file, kSensor), size = bigEndian32(file, kSensor + 4);
  return size <= file.size() && offset <= file.size() - size;
}

}  // namespace

bool RawContainer::hasDirectories() const {
  return kind == RawKind::tiff || kind == RawKind::cr2 || kind == RawKind::orf || kind == RawKind::rw2;
}

std::optional<RawContainer> readRawContainer(FileBytes file) {
  const auto* const signature = std::find_if(std::begin(kSignatures), std::end(kSignatures),
                                             [&](const Signature& row) { return row.matches(file); });
  if (signature == std::end(kSignatures)) return std::nullopt;
  RawContainer found{signature->kind, signature->type, {}, true};
  if (found.kind == RawKind::raf) found.isWhole = isWholeFujifilm(file);
  if (!found.hasDirectories()) return found;
  found.directories = readRawDirectories(file);
  const auto& all = found.directories.all;
  if (found.kind == RawKind::tiff) {
    if (std::none_of(all.begin(), all.end(), isRaw)) return std::nullopt;
    found.type = typeOfTiff(found.directories);
  }
  if (found.kind == RawKind::rw2 && beginsWith(found.directories.make, "LEICA"))
    found.type = "com.leica.rwl-raw-image";
  // Olympus does not mark its raw pixels; Panasonic has a place of its own for where they lie.
  found.isWhole = std::all_of(all.begin(), all.end(), [&](const RawDirectory& directory) {
    const bool counts = directory.isRaw() || found.kind == RawKind::orf;
    return found.kind == RawKind::rw2 || !counts || directory.fits(file);
  });
  return found;
}

}  // namespace ostra
