#include "sdblk/progress.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

TEST(ProgressText, HasFilesBytesAndTimeLeft) {
  const Amount all = {.files = 40, .bytes = 400000000};
  EXPECT_EQ(progress_text({.files = 12, .bytes = 100000000}, &all, 2.0),
            "sdblk: 12 of 40 files, 100.0 of 400.0 MB, 0:06 left");
}

TEST(ProgressText, LargeRunsAreInGigabytes) {
  const Amount all = {.files = 2, .bytes = 5000000000};
  EXPECT_EQ(progress_text({.files = 0, .bytes = 1250000000}, &all, 100.0),
            "sdblk: 0 of 2 files, 1.2 of 5.0 GB, 5:00 left");
}

TEST(ProgressText, HasOnlyWhatIsDoneWhereTheRestIsNotKnown) {
  EXPECT_EQ(progress_text({.files = 12, .bytes = 100000000}, nullptr, 2.0),
            "sdblk: 12 files, 100.0 MB");
  EXPECT_EQ(progress_text({.files = 1, .bytes = 1000000000}, nullptr, 2.0),
            "sdblk: 1 files, 1.0 GB");
}

TEST(ProgressText, HasNoTimeLeftBeforeTheFirstByte) {
  const Amount all = {.files = 3, .bytes = 1000000};
  EXPECT_EQ(progress_text({}, &all, 2.0), "sdblk: 0 of 3 files, 0.0 of 1.0 MB");
}

TEST(ProgressText, FilesThatGrowLeaveNoTime) {
  const Amount all = {.files = 3, .bytes = 1000000};
  EXPECT_EQ(progress_text({.files = 3, .bytes = 2000000}, &all, 2.0),
            "sdblk: 3 of 3 files, 2.0 of 1.0 MB, 0:00 left");
}

TEST(Tally, CountsFilesAndTheBytesOfThoseThatAreRead) {
  Tally tally(2);
  *tally.position(0) = 100;
  tally.count_file(0);
  *tally.position(0) = 5;
  *tally.position(1) = 20;
  EXPECT_EQ(tally.done().files, 1);
  EXPECT_EQ(tally.done().bytes, 125);
  tally.count_file(1);
  EXPECT_EQ(tally.done().files, 2);
  EXPECT_EQ(tally.done().bytes, 125);
}

}  // namespace
