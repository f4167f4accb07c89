#include "tests/large/decoded_rows.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace ostra::test {
namespace {

std::string commandFor(const std::string& path, bool withAlpha) {
  const bool isPng = std::filesystem::path(path).extension() == ".png";
  const std::string program = isPng ? "pngtopam -byrow " : "djpeg -pnm ";
  return "exec " + program + (isPng && withAlpha ? "-alphapam '" : "'") + path + "'";
}

unsigned bitsOf(unsigned most) { return most > 255 ? 16 : 8; }

}  // namespace

DecodedRows::DecodedRows(const std::string& path, bool withAlpha)
    : output_(popen(commandFor(path, withAlpha).c_str(), "r")) {
  if (output_ == nullptr) throw std::runtime_error("cannot start a decoder");
  try {
    readHead();
  } catch (...) {
    pclose(output_);
    throw;
  }
}

DecodedRows::~DecodedRows() {
  if (output_ != nullptr) pclose(output_);
}

void DecodedRows::readHead() {
  char kind = 0;
  unsigned most = 0;
  bool known = std::fscanf(output_, "P%c ", &kind) == 1;
  if (known && kind == '7') {
    known = std::fscanf(output_, "WIDTH %u HEIGHT %u DEPTH %u MAXVAL %u TUPLTYPE %*s ENDHDR", &width_,
                        &height_, &samples_, &most) == 4;
  } else {
    samples_ = kind == '5' ? 1 : 3;
    known = known && std::fscanf(output_, "%u %u %u", &width_, &height_, &most) == 3;
  }
  if (!known || std::fgetc(output_) != '\n') throw std::runtime_error("another program reads no picture");
  bits_ = bitsOf(most);
}

void DecodedRows::readRow(std::vector<std::uint8_t>& row) {
  row.resize(std::size_t{width_} * samples_ * bits_ / 8);
  if (std::fread(row.data(), 1, row.size(), output_) != row.size())
    throw std::runtime_error("another program reads a part of the picture only");
}

bool DecodedRows::endWell() {
  const bool empty = std::fgetc(output_) == EOF;
  const int status = pclose(output_);
  output_ = nullptr;
  return empty && status == 0;
}

}  // namespace ostra::test
