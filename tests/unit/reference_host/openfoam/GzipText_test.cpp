#include "reference_host/openfoam/GzipText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "reference_host/openfoam/GzipFile.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::GzipFile;
using reference_host::GzipPacker;
using reference_host::OpenGzipFile;

std::string RandomBytes(std::size_t n) {
  std::mt19937 random(7);
  std::string bytes(n, '\0');
  for (char& c : bytes) c = static_cast<char>(random() % 11);
  return bytes;
}

TEST(GzipText, PacksATextInPieces) {
  std::string const text = RandomBytes(400000);
  for (std::size_t const piece : {std::size_t{1000}, std::size_t{65536}, text.size()}) {
    GzipPacker packer;
    std::string packed;
    for (std::size_t at = 0; at < text.size(); at += piece)
      packed += packer.Pack(std::string_view(text).substr(at, piece));
    packed += packer.Finish();
    TemporaryFolder const folder;
    std::string const file = folder.Write("packed.gz", packed);
    EXPECT_EQ(text, GzipFile(file).ReadRest().View());
    EXPECT_LT(packed.size(), text.size());
  }
  GzipPacker nothing;
  TemporaryFolder const folder;
  EXPECT_EQ(0U, GzipFile(folder.Write("nothing.gz", nothing.Finish())).ReadRest().size);
}

TEST(GzipFile, IsReadFromAnywhere) {
  std::string const text = RandomBytes(400000);
  TemporaryFolder const folder;
  auto const file = OpenGzipFile(folder.Write("packed.gz", reference_host::Gzipped(text)));
  ASSERT_EQ(text.size(), file->Size());
  for (std::size_t const at : {0, 399990, 5, 200000, 200010, 100}) {
    std::string bytes(10, '\0');
    file->Read(at, bytes.data(), bytes.size());
    EXPECT_EQ(text.substr(at, 10), bytes) << at;
  }
}

}  // namespace
