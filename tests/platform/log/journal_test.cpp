#include "platform/log/journal.h"

#include <cstring>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using test::TemporaryFolder;

/// A journal of the test's own: a datagram socket, and what arrives there.
class Journal {
 public:
  explicit Journal(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("cannot bind " + path);
    }
  }

  void shrinkBuffer() {
    const int size = 4096;
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  }

  /// The next datagram; in its descriptor, where it came with one, what that holds. "none" when nothing
  /// waits.
  std::string receive() {
    std::string bytes(1 << 18, '\0');
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec part{bytes.data(), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t size = recvmsg(socket_.get(), &message, MSG_CMSG_CLOEXEC);
    if (size < 0) return "none";
    bytes.resize(static_cast<std::size_t>(size));
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr) return bytes;
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return contentsOf(UniqueFd(descriptor));
  }

  bool lastWasSealed = false;

 private:
  std::string contentsOf(const UniqueFd& file) {
    const int seals = fcntl(file.get(), F_GET_SEALS);
    lastWasSealed = seals == (F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
    struct stat status {};
    fstat(file.get(), &status);
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (pread(file.get(), bytes.data(), bytes.size(), 0) != status.st_size) return "unreadable";
    return bytes;
  }

  UniqueFd socket_;
};

class JournalTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  Journal journal_{folder_.path("socket")};
  JournalSink sink_{folder_.path("socket")};
};

TEST_F(JournalTest, SendsALineAndItsPartsAsOneRecord) {
  sink_.write("org.example", "Tests", LogLevel::info,
              {"srgb: wrote a.png (in place)", {{"OSTRA_KIND", "srgb"}}});
  EXPECT_EQ(journal_.receive(),
            "MESSAGE=srgb: wrote a.png (in place)\n"
            "PRIORITY=6\n"
            "SYSLOG_IDENTIFIER=ostra\n"
            "OSTRA_SUBSYSTEM=org.example\n"
            "OSTRA_CATEGORY=Tests\n"
            "OSTRA_KIND=srgb\n");
  EXPECT_EQ(journal_.receive(), "none");
}

TEST_F(JournalTest, GivesErrorsTheirPriority) {
  sink_.write("s", "c", LogLevel::error, {"bad", {}});
  EXPECT_NE(journal_.receive().find("\nPRIORITY=3\n"), std::string::npos);
}

TEST_F(JournalTest, SendsAValueOfSeveralLinesWithItsLength) {
  sink_.write("s", "c", LogLevel::info, {"one\nMESSAGE=forged", {}});
  const std::string expected =
      std::string("MESSAGE\n\x12\0\0\0\0\0\0\0", 16) + "one\nMESSAGE=forged\nPRIORITY=6\n";
  EXPECT_EQ(journal_.receive().substr(0, expected.size()), expected);
}

TEST_F(JournalTest, SendsAHugeLineInASealedMemoryFile) {
  journal_.shrinkBuffer();
  const std::string text(3 << 20, 'x');
  sink_.write("s", "c", LogLevel::info, {text, {}});
  const std::string record = journal_.receive();
  EXPECT_EQ(record.substr(0, text.size() + 20), "MESSAGE=" + text + "\nPRIORITY=6\n");
  EXPECT_TRUE(journal_.lastWasSealed);
}

TEST_F(JournalTest, LeavesOutFieldsWhoseNamesTheJournalWouldNotTake) {
  const std::string record = journalRecord(
      "s", "c", LogLevel::info,
      {"m", {{"_PID", "1"}, {"lower", "1"}, {"1ST", "1"}, {"", "1"}, {"A=B", "1"}, {"GOOD_1", "1"}}});
  EXPECT_EQ(record.substr(record.find("OSTRA_CATEGORY")), "OSTRA_CATEGORY=c\nGOOD_1=1\n");
}

TEST_F(JournalTest, LosesLinesInsteadOfWaitingForAJournalThatDoesNotRead) {
  for (int i = 0; i < 5000; ++i) sink_.write("s", "c", LogLevel::info, {std::string(1000, 'x'), {}});
  EXPECT_NE(journal_.receive(), "none");
}

TEST_F(JournalTest, IsEnabledForEveryLevelWhileTheJournalIsThere) {
  EXPECT_TRUE(sink_.isEnabled(LogLevel::info));
  EXPECT_TRUE(sink_.isEnabled(LogLevel::error));
}

TEST(JournalSink, IsEnabledForErrorsOnlyWhereNobodyListens) {
  const TemporaryFolder folder;
  JournalSink sink(folder.path("nothing"));
  EXPECT_FALSE(sink.isEnabled(LogLevel::info));
  EXPECT_TRUE(sink.isEnabled(LogLevel::error));
  sink.write("s", "c", LogLevel::error, {"lost", {}});
}

TEST(JournalSink, SurvivesAPathThatFitsNoSocketAddress) {
  const TemporaryFolder folder;
  const std::string path = folder.path(std::string(200, 'p'));
  test::writeFile(path, "");
  JournalSink(path).write("s", "c", LogLevel::error, {"lost", {}});
}

TEST(JournalSink, WritesItsLinesToStandardErrorWhenVerbose) {
  const TemporaryFolder folder;
  JournalSink sink(folder.path("nothing"));
  testing::internal::CaptureStderr();
  sink.write("s", "c", LogLevel::info, {"silent", {}});
  setLogVerbose(true);
  EXPECT_TRUE(sink.isEnabled(LogLevel::info));
  sink.write("s", "c", LogLevel::info, {"srgb: wrote a\033.png (in place)", {}});
  setLogVerbose(false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "srgb: wrote a?.png (in place)\n");
}

}  // namespace
}  // namespace ostra
