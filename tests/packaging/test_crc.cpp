// The checksums a reskin package compares by.

#include "packagefixture.h"
#include "velmora/packaging/crc.h"

using namespace velmora::packaging;

namespace {

class Crc : public velmora::test::PackageTest {};

TEST_F(Crc, KnownValuesOfBothAlgorithms) {
    clsCRC crc;
    EXPECT_EQ(crc.CalculateBytes("123456789"), 0xCBF43926u);
    EXPECT_EQ(crc.CalculateBytes("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
    crc.Algorithm = 0;
    EXPECT_EQ(crc.CalculateBytes("123456789"), 0x29B1u);
}

TEST_F(Crc, FileInPiecesGivesTheSameAsBytesAndMissingOrEmptyGiveZero) {
    std::string big;
    for (int i = 0; i < 200000; ++i)
        big += static_cast<char>(i * 7 + 3);
    put(m_dir / "big.bin", big);
    put(m_dir / "empty.bin", "");
    clsCRC crc;
    EXPECT_EQ(crc.CalculateFile(m_dir / "big.bin"), crc.CalculateBytes(big));
    EXPECT_EQ(crc.CalculateFile(m_dir / "empty.bin"), 0u);
    EXPECT_EQ(crc.CalculateFile(m_dir / "nothing.bin"), 0u);
    EXPECT_EQ(crc.CalculateFile(m_dir), 0u); // a folder is no file
    crc.Algorithm = 0;
    EXPECT_EQ(crc.CalculateFile(m_dir / "big.bin"), crc.CalculateBytes(big));
    EXPECT_EQ(GetCRC(m_dir / "empty.bin"), GetCRC(m_dir / "nothing.bin"));
    EXPECT_EQ(GetCRC(m_dir / "big.bin").size(), 8u);
}

} // namespace
