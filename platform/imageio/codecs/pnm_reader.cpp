#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/codecs/plain_pixels.h"
#include "platform/imageio/codecs/pnm.h"
#include "platform/imageio/codecs/pnm_header.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// The samples of a picture, row by row, whatever way they are stored.
class PnmSamples {
 public:
  PnmSamples(FileBytes file, const PnmHeader& header)
      : header_(header), words_(file, header.dataAt), data_(file.subspan(header.dataAt)) {
    rowBytes_ = header.rowBytes().value_or(0);
  }

  // False where the file ends, or a sample is beyond the largest.
  bool next(std::vector<std::uint16_t>& row) {
    if (!(header_.isText ? readWords(row) : readBytes(row))) return false;
    return *std::max_element(row.begin(), row.end()) <= header_.largest;
  }

 private:
  // Nothing is cut to fit before it is looked at.
  bool readWords(std::vector<std::uint16_t>& row) {
    for (std::uint16_t& sample : row) {
      const auto word = header_.isBits ? words_.bit() : words_.number();
      if (!word || *word > header_.largest) return false;
      sample = static_cast<std::uint16_t>(*word);
    }
    return true;
  }
  bool readBytes(std::vector<std::uint16_t>& row) {
    if (data_.size() < rowBytes_) return false;
    const ByteView stored = data_.first(rowBytes_);
    data_ = data_.subspan(rowBytes_);
    if (header_.isBits) {
      for (std::size_t i = 0; i < row.size(); ++i) row[i] = stored[i / 8] >> (7 - i % 8) & 1;
    } else if (header_.isDeep()) {
      for (std::size_t i = 0; i < row.size(); ++i) row[i] = bigEndian16(stored, 2 * i);
    } else {
      std::copy(stored.begin(), stored.end(), row.begin());
    }
    return true;
  }

  const PnmHeader& header_;
  PnmWords words_;
  ByteView data_;  // from the next row on
  std::size_t rowBytes_ = 0;
};

// A row of samples as the layout has them: in the whole range, RGB with a fourth.
class PnmRows {
 public:
  explicit PnmRows(const PnmHeader& header) : header_(header), full_(header.isDeep() ? 65535 : 255) {
    for (std::uint32_t value = 0; value < 256 && value <= header.largest; ++value)
      table_[value] = scaledSample(value, header.largest, full_);
    // Of bits the 1 is black.
    if (header.isBits) std::swap(table_[0], table_[1]);
  }
  void store(const std::uint16_t* from, std::uint8_t* to) const {
    const bool fills = header_.samples == 3;
    for (std::uint32_t x = 0; x < header_.width; ++x) {
      for (unsigned i = 0; i < header_.samples; ++i) to = put(scaled(*from++), to);
      if (fills) to = put(full_, to);
    }
  }

 private:
  std::uint32_t scaled(std::uint32_t value) const {
    if (!header_.isDeep()) return table_[value];
    return header_.largest == full_ ? value : scaledSample(value, header_.largest, full_);
  }
  std::uint8_t* put(std::uint32_t value, std::uint8_t* to) const {
    *to++ = static_cast<std::uint8_t>(value);
    if (header_.isDeep()) *to++ = static_cast<std::uint8_t>(value >> 8);
    return to;
  }

  const PnmHeader& header_;
  std::uint32_t full_;
  std::array<std::uint16_t, 256> table_{};
};

class PnmReader : public CodecReader {
 public:
  PnmReader(FileBytes file, PnmHeader header, std::uint32_t count) : file_(file), header_(std::move(header)) {
    opened_ = {.type = "public.pbm",
               .count = count,
               .width = header_.width,
               .height = header_.height,
               .bits = static_cast<std::uint8_t>(header_.isDeep() ? 16 : 8),
               .components = static_cast<std::uint8_t>(header_.samples)};
  }

  const Opened& opened() const override { return opened_; }

  // The first picture alone, of however many.
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0 || header_.samples == 0) return Fault{FaultKind::damaged};
    const Layout layout =
        plainLayout(header_.width, header_.height, header_.isDeep() ? 16 : 8, model(), header_.hasAlpha);
    const LimitName limit =
        exceededLimit(limits, layout.width, layout.height, layout.bitsPerPixel / 8u, file_.size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    PixelMemory memory(layout.bytesPerRow * layout.height);
    PnmSamples samples(file_, header_);
    const PnmRows rows(header_);
    std::vector<std::uint16_t> row(std::size_t{header_.width} * header_.samples);
    for (std::uint32_t y = 0; y < header_.height; ++y) {
      if (!samples.next(row)) return Fault{FaultKind::damaged};
      rows.store(row.data(), memory.data() + y * layout.bytesPerRow);
    }
    return Pixels{layout, std::move(memory).share(), Untagged{}};
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    PictureFacts facts;
    facts.width = header_.width;
    facts.height = header_.height;
    facts.depth = static_cast<unsigned>(std::bit_width(header_.largest));
    facts.model = model();
    facts.hasAlpha = header_.hasAlpha;
    Carrier carrier;
    std::size_t size = 0;
    for (const std::string& comment : header_.comments) size += comment.size();
    if (size > limits.metadataBytes) throw LimitExceeded{LimitName::metadataBytes};
    carrier.comments = header_.comments;
    return readMetadata(std::move(carrier), pictureTree(facts, Untagged{}));
  }

 private:
  CGColorSpaceModel model() const {
    return header_.isGray() ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  }

  FileBytes file_;
  PnmHeader header_;
  Opened opened_;
};

}  // namespace

bool matchesPnm(FileBytes head) {
  if (head.size() < 7 || head[0] != 'P' || head[1] < '1' || head[1] > '7') return false;
  if (head[1] == '7') return head[2] == '\n';
  // A number or a comment follows: a text that begins with such two letters is none.
  const auto next = std::find_if(head.begin() + 2, head.end(), [](std::uint8_t byte) {
    return byte != ' ' && byte != '\t' && byte != '\n' && byte != '\r';
  });
  const bool spaced = next != head.begin() + 2;
  return next != head.end() && (*next == '#' || (spaced && *next >= '0' && *next <= '9'));
}

Answer<std::unique_ptr<CodecReader>> openPnm(FileBytes file, const Limits& limits) {
  auto header = readPnmHeader(file);
  if (!header) return Fault{FaultKind::damaged};
  const std::uint32_t count = countPnmPictures(file, *header, limits.frames);
  return std::make_unique<PnmReader>(file, std::move(*header), count);
}

}  // namespace ostra
