#include "host/file_item_provider.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/stop_signals.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/unique_fd.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

struct Loaded {
  std::optional<URL> url;
  bool isInPlace = false;
  std::optional<NSError> error;
  bool onMainThread = true;
  /// Whether the provider offered a file URL while it called back.
  bool offersFileURL = false;
};

/// Read where it was handed over: what is handed over is valid only until the handler returns.
std::optional<NSError> errorIn(const std::exception_ptr& error) {
  if (!error) return std::nullopt;
  try {
    std::rethrow_exception(error);
  } catch (const NSError& known) {
    return known;
  }
}

class FileItemProviderTest : public testing::Test {
 protected:
  std::shared_ptr<FileItemProvider> provider(const std::string& path) {
    return std::make_shared<FileItemProvider>(path, 0, std::make_shared<Work>(nullptr));
  }

  Loaded load(const std::shared_ptr<FileItemProvider>& item, const std::string& type = "public.image") {
    std::promise<Loaded> promise;
    item->loadInPlaceFileRepresentationForTypeIdentifier(
        type,
        [&promise, item](const std::optional<URL>& url, bool isInPlace, const std::exception_ptr& error) {
          promise.set_value({url, isInPlace, errorIn(error), isMainThread(),
                             item->hasItemConformingToTypeIdentifier("public.file-url")});
        });
    return waitFor(promise);
  }

  Loaded loadItem(const std::shared_ptr<FileItemProvider>& item,
                  const std::string& type = "public.file-url") {
    std::promise<Loaded> promise;
    item->loadItemForTypeIdentifier(
        type, [&promise](const NSItemProvider::Item& loaded, const std::exception_ptr& error) {
          const URL* url = std::get_if<URL>(&loaded);
          promise.set_value({url == nullptr ? std::nullopt : std::optional<URL>(*url), false, errorIn(error),
                             isMainThread()});
        });
    return waitFor(promise);
  }

  static Loaded waitFor(std::promise<Loaded>& promise) {
    auto future = promise.get_future();
    if (future.wait_for(10s) != std::future_status::ready) throw std::runtime_error("no answer");
    return future.get();
  }

  /// Both loads of a bad path: no URL, no file URL any more, and this sentence in both errors.
  void expectRefusal(const std::string& path, const std::string& reason) {
    const auto item = provider(path);
    const Loaded loaded = load(item);
    EXPECT_FALSE(loaded.url) << path;
    EXPECT_FALSE(loaded.offersFileURL) << path;
    ASSERT_TRUE(loaded.error) << path;
    EXPECT_THAT(loaded.error->localizedDescription(), HasSubstr(reason));
    EXPECT_FALSE(loadItem(item).url);
  }

  std::string addFile(const std::string& name) {
    test::writeFile(folder_.path(name), "bytes");
    return folder_.path(name);
  }

  test::TemporaryFolder folder_;
};

TEST_F(FileItemProviderTest, RegistersTheTypeOfTheExtensionAndTheFileURL) {
  EXPECT_THAT(provider("/x/a.PNG")->registeredTypeIdentifiers(),
              ElementsAre("public.png", "public.file-url"));
  EXPECT_THAT(provider("/x/a.jpg")->registeredTypeIdentifiers(),
              ElementsAre("public.jpeg", "public.file-url"));
  EXPECT_THAT(provider("/x/a.txt")->registeredTypeIdentifiers(),
              ElementsAre("public.data", "public.file-url"));
  EXPECT_THAT(provider("/x/png")->registeredTypeIdentifiers(), ElementsAre("public.data", "public.file-url"));
}

TEST_F(FileItemProviderTest, SuggestsTheWholeName) {
  EXPECT_EQ(provider("/x/holiday.final.png")->suggestedName(), "holiday.final.png");
}

TEST_F(FileItemProviderTest, HasWhatItsTypesConformTo) {
  const auto item = provider(addFile("a.png"));
  for (const char* type : {"public.png", "public.image", "public.data", "public.file-url", "public.url"}) {
    EXPECT_TRUE(item->hasItemConformingToTypeIdentifier(type)) << type;
  }
  for (const char* type : {"public.jpeg", "com.adobe.pdf", "no type"}) {
    EXPECT_FALSE(item->hasItemConformingToTypeIdentifier(type)) << type;
  }
}

TEST_F(FileItemProviderTest, GivesTheFileItselfOnAnotherThread) {
  const std::string path = addFile("a.png");
  for (const char* type : {"public.image", "public.png"}) {
    const Loaded loaded = load(provider(path), type);
    ASSERT_TRUE(loaded.url);
    EXPECT_EQ(loaded.url->path(), path);
    EXPECT_TRUE(loaded.isInPlace);
    EXPECT_FALSE(loaded.error);
    EXPECT_FALSE(loaded.onMainThread);
  }
}

TEST_F(FileItemProviderTest, StampsTheURLWithTheVersionOfTheFile) {
  const std::string path = addFile("a.png");
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  const auto version = load(provider(path)).url->fileVersion();
  ASSERT_TRUE(version);
  EXPECT_EQ(version->inode, status.st_ino);
  EXPECT_EQ(version->device, status.st_dev);
  EXPECT_EQ(version->size, 5);
  EXPECT_EQ(version->modified, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec);
  EXPECT_EQ(version->changed, status.st_ctim.tv_sec * 1'000'000'000 + status.st_ctim.tv_nsec);
  EXPECT_TRUE(loadItem(provider(path)).url->fileVersion());
}

TEST_F(FileItemProviderTest, KeepsTheNameOfALinkAndTakesTheVersionOfItsFile) {
  const std::string path = addFile("a.png");
  std::filesystem::create_symlink(path, folder_.path("link.png"));
  const Loaded loaded = load(provider(folder_.path("link.png")));
  EXPECT_EQ(loaded.url->path(), folder_.path("link.png"));
  EXPECT_EQ(loaded.url->fileVersion(), load(provider(path)).url->fileVersion());
}

TEST_F(FileItemProviderTest, CountsARelativePathFromTheCurrentFolder) {
  addFile("a.png");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  const auto item = provider("a.png");
  const std::string folder = std::filesystem::current_path().string();
  std::filesystem::current_path(before);
  EXPECT_EQ(load(item).url->path(), folder + "/a.png");
}

TEST_F(FileItemProviderTest, LeadsAFileOfNoImageTypeToItsFileURL) {
  const auto item = provider(addFile("picture"));
  const Loaded loaded = load(item);
  EXPECT_FALSE(loaded.url);
  EXPECT_TRUE(loaded.offersFileURL);
  ASSERT_TRUE(loaded.error);
  EXPECT_EQ(loaded.error->domain(), NSItemProviderErrorDomain);
  EXPECT_EQ(loaded.error->code(), NSItemProviderItemUnavailableError);
  const Loaded second = loadItem(item);
  ASSERT_TRUE(second.url);
  EXPECT_EQ(second.url->path(), folder_.path("picture"));
  EXPECT_FALSE(second.onMainThread);
}

TEST_F(FileItemProviderTest, HasNoOtherItemThanTheFileURL) {
  const Loaded loaded = loadItem(provider(addFile("a.png")), "public.png");
  EXPECT_FALSE(loaded.url);
  EXPECT_TRUE(loaded.error);
}

TEST_F(FileItemProviderTest, TakesNamesThatAreNoText) {
  const std::string path = addFile("\xFF\xFE.png");
  EXPECT_EQ(load(provider(path)).url->path(), path);
  EXPECT_EQ(provider(path)->suggestedName(), "\xFF\xFE.png");
}

TEST_F(FileItemProviderTest, RefusesAPathWhereNothingIs) {
  expectRefusal(folder_.path("nothing.png"), "no such file");
  expectRefusal(folder_.path("no folder/a.png"), "no such file");
  expectRefusal(addFile("file") + "/a.png", "not a folder");
}

TEST_F(FileItemProviderTest, RefusesWhatIsNoFile) {
  std::filesystem::create_directory(folder_.path("folder.png"));
  expectRefusal(folder_.path("folder.png"), "“folder.png” is a folder, not a file.");
  expectRefusal("/dev/null", "is a device, not a file.");
  const std::string path = folder_.path("socket.png");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  expectRefusal(path, "is a socket, not a file.");
}

TEST_F(FileItemProviderTest, RefusesAPipeWithoutWaitingForItsOtherEnd) {
  ASSERT_EQ(mkfifo(folder_.path("pipe.png").c_str(), 0600), 0);
  expectRefusal(folder_.path("pipe.png"), "“pipe.png” is a pipe, not a file.");
}

TEST_F(FileItemProviderTest, RefusesLinksThatLeadNowhere) {
  std::filesystem::create_symlink("nowhere", folder_.path("dangling.png"));
  expectRefusal(folder_.path("dangling.png"), "is a link to a file that does not exist.");
  std::filesystem::create_symlink("loop.png", folder_.path("loop.png"));
  expectRefusal(folder_.path("loop.png"), "is a link that leads back to itself.");
}

TEST_F(FileItemProviderTest, RefusesANameThatIsTooLong) {
  expectRefusal(folder_.path(std::string(300, 'n') + ".png"), "could not be opened: File name too long.");
}

TEST_F(FileItemProviderTest, SaysWhyAPathIsBadWhateverTypeIsAskedFor) {
  expectRefusal(folder_.path("nothing"), "no such file");
}

// As an ordinary user: nothing is unreadable for root.
TEST_F(FileItemProviderTest, RefusesAFileThatTheUserMayNotRead) {
  const std::string path = addFile("secret.png");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  const bool wasRoot = geteuid() == 0;
  ASSERT_EQ(wasRoot ? seteuid(65534) : 0, 0);
  const Loaded loaded = load(provider(path));
  ASSERT_EQ(wasRoot ? seteuid(0) : 0, 0);
  EXPECT_FALSE(loaded.url);
  EXPECT_FALSE(loaded.offersFileURL);
  ASSERT_TRUE(loaded.error);
  EXPECT_THAT(loaded.error->localizedDescription(), HasSubstr("permission"));
}

TEST_F(FileItemProviderTest, CallsNobodyBackAfterASignal) {
  const StopSignals signals;
  std::raise(SIGTERM);
  std::atomic<bool> called{false};
  provider(addFile("a.png"))
      ->loadInPlaceFileRepresentationForTypeIdentifier(
          "public.image",
          [&called](const std::optional<URL>&, bool, const std::exception_ptr&) { called = true; });
  MainLoop::run();
  EXPECT_FALSE(called);
}

}  // namespace
}  // namespace ostra
