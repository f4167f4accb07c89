#include "host/integration/integration_record.h"

#include <gtest/gtest.h>

#include "host/usage_error.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

TEST(IntegrationRecord, IsReadAsItWasWritten) {
  const test::TemporaryFolder folder;
  IntegrationRecord record;
  record.files = {{"/home/ä b/x%20\xFF\n.desktop", {"1-a", "2-b"}}, {"/c", {}}};
  record.folders = {"/home/ä b", "/\xFE"};
  record.madeList = "12-ab";
  writeRecord(record, folder.path("record"));
  EXPECT_EQ(readRecord(folder.path("record")), record);
  record.madeList.reset();
  writeRecord(record, folder.path("record"));
  EXPECT_EQ(readRecord(folder.path("record")), record);
}

TEST(IntegrationRecord, IsEmptyWhereThereIsNone) {
  const test::TemporaryFolder folder;
  EXPECT_TRUE(readRecord(folder.path("none")).isEmpty());
}

TEST(IntegrationRecord, IsNotGuessedWhereItCannotBeRead) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("record"), "no property list");
  EXPECT_THROW(readRecord(folder.path("record")), UsageError);
  EXPECT_THROW(readRecord(folder.path()), UsageError);
}

TEST(Fingerprints, TellTextsApart) {
  EXPECT_EQ(fingerprintOf("abc"), fingerprintOf("abc"));
  EXPECT_NE(fingerprintOf("abc"), fingerprintOf("acb"));
  EXPECT_NE(fingerprintOf("abc"), fingerprintOf("abc\n"));
}

}  // namespace
}  // namespace ostra
