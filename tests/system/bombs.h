#pragma once
#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// A file that asks for far more than it gives.
struct Bomb {
  std::string name;  // letters and digits
  std::string extension;
  std::function<Bytes()> file;
  /// Width and height, as "16x16", of the picture in it, which must come out; otherwise it must be refused.
  std::string picture{};
};

std::vector<Bomb> pngBombs();
std::vector<Bomb> jpegBombs();
std::vector<Bomb> metadataBombs();
std::vector<Bomb> gifBombs();
std::vector<Bomb> bitmapBombs();    // BMP, ICO, TGA, PNM
std::vector<Bomb> readOnlyBombs();  // PSD, HDR
std::vector<Bomb> tiffBombs();
std::vector<Bomb> modernBombs();  // JPEG 2000, JPEG XL, WebP
std::vector<Bomb> heifBombs();    // HEIC, AVIF
std::vector<Bomb> lightBombs();   // OpenEXR, camera raw

}  // namespace ostra::test
