#pragma once
#include <string>

namespace ostra::test {

/// A file system in an image file, mounted at a folder by whoever started this program, who also unmounts it.
class MountedImage {
 public:
  MountedImage(std::string image, std::string folder)
      : image_(std::move(image)), folder_(std::move(folder)) {}

  /// Everything to the disk.
  void flush() const;
  /// From here on nothing reaches the disk. `withLog`: what the file system has noted in its log so far does.
  void cutOff(bool withLog) const;
  /// Unmounts and mounts again, as after a power loss.
  void mountAgain() const;

 private:
  std::string image_, folder_;
};

}  // namespace ostra::test
