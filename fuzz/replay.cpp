// In place of the fuzzer's own main: every file of a folder, whole and then with single bytes changed, so
// that the targets are ordinary tests too.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kChanges = 24;

void replay(std::vector<std::uint8_t> input, std::mt19937& random) {
  LLVMFuzzerTestOneInput(input.data(), input.size());
  if (input.empty()) return;
  for (int i = 0; i < kChanges; ++i) {
    std::uint8_t& byte = input[random() % input.size()];
    const std::uint8_t before = byte;
    byte = static_cast<std::uint8_t>(random());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    byte = before;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::mt19937 random(1);
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    replay({std::istreambuf_iterator<char>(file), {}}, random);
    ++count;
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
