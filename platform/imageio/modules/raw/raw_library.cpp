#include "platform/imageio/modules/raw/raw_library.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>

// The runtime's header belongs to the compiler, and not every compiler has it.
extern "C" void omp_set_num_threads(int count);

namespace ostra {
namespace {

constexpr std::uint64_t kMegabyte = 1 << 20;

void giveUpInTime(LibRaw& library, const DecodeClock& clock) {
  library.set_progress_handler([](void* data, LibRaw_progress, int,
                                  int) { return static_cast<const DecodeClock*>(data)->isOver() ? 1 : 0; },
                               const_cast<DecodeClock*>(&clock));
}

void noteLostData(LibRaw& library, bool& lost) {
  library.set_dataerror_handler([](void* data, const char*, const int) { *static_cast<bool*>(data) = true; },
                                &lost);
}

// To the model's name the library appends a few characters, and ends the process where they have no room. It
// asks for every entry of a directory before it reads it.
void refuseLongModels(LibRaw& library) {
  library.set_exifparser_handler(
      [](void*, int tag, int, int, unsigned, void* file, INT64) {
        constexpr int kModel = 272, kUniqueModel = 50708;
        if ((tag & 0xFFFF) != kModel && (tag & 0xFFFF) != kUniqueModel) return;
        constexpr std::size_t kRead = 64, kLongest = 40;
        auto& stream = *static_cast<RawStream*>(static_cast<LibRaw_abstract_datastream*>(file));
        std::array<char, kRead> name{};
        stream.peek(name);
        const auto end = std::find(name.begin(), name.end(), 0);
        const auto shown =
            std::find_if(std::reverse_iterator(end), name.rend(), [](char c) { return c != ' '; });
        if (static_cast<std::size_t>(name.rend() - shown) > kLongest) throw LIBRAW_EXCEPTION_IO_CORRUPT;
      },
      nullptr);
}

// Linear light in the primaries of ROMM RGB; the curve is applied when the pixels are taken.
void chooseSettings(libraw_output_params_t& settings, const Limits& limits) {
  settings.output_bps = 16;
  settings.output_color = 4;
  settings.gamm[0] = settings.gamm[1] = 1;
  settings.no_auto_bright = 1;
  settings.use_camera_wb = 1;
  settings.use_auto_wb = 0;
  settings.user_flip = 0;
  settings.use_rawspeed = 0;
  settings.use_dngsdk = 0;
  settings.raw_processing_options |=
      LIBRAW_PROCESSING_CAMERAWB_FALLBACK_TO_DAYLIGHT | LIBRAW_PROCESSING_USE_DNG_DEFAULT_CROP;
  settings.max_raw_memory_mb = static_cast<unsigned>(limits.decodedBytes / kMegabyte + 1);
}

/// What the library throws and lets out means a damaged file, unless there was no memory.
template <class Call>
int withoutExceptions(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::length_error&) {
    throw;
  } catch (...) {
    return LIBRAW_DATA_ERROR;
  }
}

/// From the quarter turns of the library.
int orientationOf(int flip) {
  switch (flip) {
    case 3:
      return 3;
    case 5:
      return 8;
    case 6:
      return 6;
    default:
      return 1;
  }
}

}  // namespace

void keepToOneThread() { omp_set_num_threads(1); }

RawStream::RawStream(FileBytes file)
    : LibRaw_buffer_datastream(const_cast<std::uint8_t*>(file.data()), file.size()) {}

int RawStream::read(void* to, std::size_t size, std::size_t count) {
  const auto before = tell();
  const int result = LibRaw_buffer_datastream::read(to, size, count);
  const auto got = static_cast<std::uint64_t>(tell() - before);
  missing_ += size * count - std::min<std::uint64_t>(got, size * count);
  return result;
}

int RawStream::get_char() {
  const int result = LibRaw_buffer_datastream::get_char();
  if (result < 0) ++missing_;
  return result;
}

void RawStream::peek(std::span<char> to) {
  const INT64 position = tell();
  LibRaw_buffer_datastream::read(to.data(), 1, to.size());
  seek(position, SEEK_SET);
}

RawLibrary::RawLibrary(FileBytes file, const Limits& limits)
    : stream_(file),
      clock_(limits.seconds),
      library_(
          std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK)) {
  keepToOneThread();
  chooseSettings(library_->imgdata.params, limits);
  giveUpInTime(*library_, clock_);
  noteLostData(*library_, lostData_);
  refuseLongModels(*library_);
}

std::optional<Fault> RawLibrary::faultOf(int result) const {
  switch (result) {
    case LIBRAW_SUCCESS:
      return std::nullopt;
    case LIBRAW_UNSUFFICIENT_MEMORY:
    case LIBRAW_TOO_BIG:
    case LIBRAW_MEMPOOL_OVERFLOW:
      return Fault{FaultKind::limit, LimitName::decodedBytes};
    case LIBRAW_CANCELLED_BY_CALLBACK:
      return Fault{FaultKind::limit, LimitName::seconds};
    default:
      return Fault{FaultKind::damaged};
  }
}

std::optional<Fault> RawLibrary::open() {
  const auto fault = faultOf(withoutExceptions([&] { return library_->open_datastream(&stream_); }));
  if (fault) return fault;
  orientation_ = orientationOf(library_->imgdata.sizes.flip);
  // A DNG says where white is. Of other cameras the library knows a value, which the brightest pixels may
  // miss by a little; what is left of highlights there would have a tint.
  if (library_->imgdata.idata.dng_version != 0) library_->imgdata.params.adjust_maximum_thr = 0;
  return std::nullopt;
}

std::pair<std::uint32_t, std::uint32_t> RawLibrary::developedSize() {
  if (withoutExceptions([&] { return library_->adjust_sizes_info_only(); }) != LIBRAW_SUCCESS) return {0, 0};
  return {library_->imgdata.sizes.iwidth, library_->imgdata.sizes.iheight};
}

std::optional<Fault> RawLibrary::develop(std::uint64_t lookahead) {
  stream_.forget();
  if (const auto fault = faultOf(withoutExceptions([&] { return library_->unpack(); }))) return fault;
  if (lostData_ || library_->error_count() > 0 || stream_.missing() > lookahead)
    return Fault{FaultKind::damaged};
  return faultOf(withoutExceptions([&] { return library_->dcraw_process(); }));
}

std::uint64_t RawLibrary::bytesForAPixel() const {
  const libraw_data_t& data = library_->imgdata;
  const bool isMosaic = data.idata.filters != 0 || data.idata.colors == 1;
  constexpr std::uint64_t kDeveloped = 8, kOurs = 8;
  std::uint64_t unpacked = isMosaic ? 2 : 8;
  if (library_->is_floating_point() != 0) unpacked += isMosaic ? 4 : 16;
  const bool isTurned = library_->is_fuji_rotated() != 0 || data.sizes.pixel_aspect != 1;
  return unpacked + kDeveloped + kOurs + (isTurned ? kDeveloped : 0);
}

}  // namespace ostra
