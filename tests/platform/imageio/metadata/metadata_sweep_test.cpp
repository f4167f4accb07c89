#include <random>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_shed.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "tests/platform/imageio/metadata/exif_builder.h"

namespace ostra {

namespace {

constexpr std::string_view kXmp =
    "<?xpacket begin='' id='x'?><x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
    "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
    "xmlns:tiff='http://ns.adobe.com/tiff/1.0/' tiff:Orientation='6' tiff:ImageWidth='3'><tiff:Make><!-- a "
    "-->M</tiff:Make>"
    "<tiff:Compression/></rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";

Carrier sample(bool bigEndian) {
  Carrier carrier;
  carrier.exif = test::cameraBlock(bigEndian);
  carrier.xmp = Bytes(kXmp.begin(), kXmp.end());
  constexpr std::string_view kIptc("\x1C\1\x5A\0\3\x1B%G\x1C\2\x5A\0\4City\x1C\2\x19\x80\4\0\0\0\2ab", 28);
  carrier.iptc = Bytes(kIptc.begin(), kIptc.end());
  constexpr std::string_view kResources(
      "8BIM\3\xED\0\0\0\0\0\20\0\x48\0\0\0\1\0\1\0\x48\0\0\0\1\0\1"
      "8BIM\4\x25\0\0\0\0\0\2ab",
      42);
  carrier.photoshopResources = Bytes(kResources.begin(), kResources.end());
  return carrier;
}

/// Reads, edits, writes and reads again. What is refused is fine; what is written must be readable.
void exercise(const Carrier& carrier) {
  Properties properties = readMetadata(carrier, {});
  if (Value* exif = properties.tree.contains("{Exif}") ? &properties.tree.at("{Exif}") : nullptr) {
    exif->get<Dictionary>()->erase("ColorSpace");
    exif->get<Dictionary>()->insert_or_assign("UserComment", "a comment that was not there before");
  }
  if (Value* tiff = properties.tree.contains("{TIFF}") ? &properties.tree.at("{TIFF}") : nullptr) {
    tiff->get<Dictionary>()->erase("Artist");
    tiff->get<Dictionary>()->insert_or_assign("Copyright", "(c)");
  }
  properties.tree.insert_or_assign("Orientation", 3);
  properties.remove("{GPS}");
  const auto blocks = writeMetadata(properties, {70000, 3});
  if (!blocks) return;
  Carrier again;
  again.exif = blocks->exif;
  again.iptc = blocks->iptc;
  again.xmp = blocks->xmp;
  const Dictionary tree = readMetadata(again, {}).tree;
  ASSERT_TRUE(blocks->exif.empty() || tree.contains("Orientation"));
  if (!blocks->exif.empty()) {
    EXPECT_TRUE(tree.at("Orientation") == Value(3));
  }
  shedExif(blocks->exif, blocks->exif.size() / 2);
  splitPhotoshop(blocks->photoshopResources);
}

template <class Damage>
void sweep(Damage damage) {
  for (const bool big : {false, true}) {
    const Carrier whole = sample(big);
    for (Bytes Carrier::*block :
         {&Carrier::exif, &Carrier::xmp, &Carrier::iptc, &Carrier::photoshopResources}) {
      damage(whole, block);
    }
  }
}

}  // namespace

TEST(MetadataSweep, SurvivesEveryTruncation) {
  sweep([](const Carrier& whole, Bytes Carrier::*block) {
    for (std::size_t size = 0; size < (whole.*block).size(); ++size) {
      Carrier cut = whole;
      (cut.*block).resize(size);
      ASSERT_NO_FATAL_FAILURE(exercise(cut)) << size;
    }
  });
}

TEST(MetadataSweep, SurvivesEveryByteChanged) {
  sweep([](const Carrier& whole, Bytes Carrier::*block) {
    for (std::size_t i = 0; i < (whole.*block).size(); ++i) {
      for (const int value : {0x00, 0xFF}) {
        Carrier changed = whole;
        (changed.*block)[i] = static_cast<std::uint8_t>(value);
        ASSERT_NO_FATAL_FAILURE(exercise(changed)) << i << " to " << value;
      }
    }
  });
}

TEST(MetadataSweep, SurvivesManyBitsFlipped) {
  std::mt19937 random(20240203);
  for (int round = 0; round < 1500; ++round) {
    Carrier changed = sample(round % 2 == 0);
    const std::size_t flips = 1 + random() % 12;
    for (std::size_t i = 0; i < flips; ++i) {
      // The first half of the block holds most of the directories.
      const std::size_t place = random() % (i % 2 == 0 ? changed.exif.size() : 260);
      changed.exif[place] = static_cast<std::uint8_t>(changed.exif[place] ^ (1u << random() % 8));
    }
    ASSERT_NO_FATAL_FAILURE(exercise(changed)) << "round " << round;
  }
}

}  // namespace ostra
