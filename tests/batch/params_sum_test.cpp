#include "batch/state/params_sum.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "support/temporary_directory.h"

namespace batch {
namespace {

TEST(ParamsSum, IsLengthAndCrc32c) {
  // RFC 3720, appendix B.4: 32 bytes of zeros.
  EXPECT_EQ(sumOfText(std::string(32, '\0')), (ParamsSum{32, 0x8a9136aaU}));
  EXPECT_EQ(sumOfText(""), (ParamsSum{0, 0}));
}

TEST(ParamsSum, OfAFileIsThatOfItsTextAtEveryLength) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("params.txt");
  for (const std::size_t length : {0U, 1U, 65535U, 65536U, 65537U, 200000U}) {
    std::string text(length, 'a');
    for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>(i % 251);
    std::ofstream(path, std::ios::binary) << text;
    EXPECT_EQ(sumOfParams(path), sumOfText(text)) << length;
  }
}

TEST(ParamsSum, IsNoneOfWhatIsNotARegularFile) {
  const TemporaryDirectory directory;
  EXPECT_EQ(sumOfParams(directory.file("gone")), std::nullopt);
  EXPECT_EQ(sumOfParams(directory.file(".")), std::nullopt);
  ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(sumOfParams(directory.file("pipe")), std::nullopt);
}

}  // namespace
}  // namespace batch
