// The field table itself: every codec at its offset, the bounds of ReadAt
// and GetAt, and a copy that leaves write-only fields alone.
#include <gtest/gtest.h>

#include <vector>

#include "reduce/objects/PackedRecord.h"

using namespace orv;
using namespace orv::reduce;

namespace {

enum ESmall : int { smallA = 1, smallB = 200 };

struct SProbe {
    uint32_t version = 0;
    uint16_t word = 0;
    bool flag = false;
    ESmall kind = smallA;
    CString name;
    double pair[2] = {};
};

using ProbeTable = TRecordTable<SProbe, 40, TConst<0, uint32_t, 40>, TWriteOnly<TField<&SProbe::version, 4>>,
                                TField<&SProbe::word, 8>, TField<&SProbe::flag, 10>,
                                TField<&SProbe::kind, 11, TAs<uint8_t>>, TField<&SProbe::name, 12, TText<4>>,
                                TField<&SProbe::pair, 16>, TReserved<32, 8>>;

} // namespace

TEST(PackedRecord, TableWritesReadsAndCopiesAtItsOffsets)
{
    SProbe p;
    p.version = 0x10002;
    p.word = 0xA1B2;
    p.flag = true;
    p.kind = smallB;
    p.name = "ABCDE"; // cut to the field's four bytes
    p.pair[0] = 1.5;
    p.pair[1] = -2.0;
    std::vector<unsigned char> r(40, 0xEE);
    ProbeTable::Write(p, r.data());
    const std::vector<unsigned char> head = {40, 0, 0, 0, 0x02, 0, 0x01, 0, 0xB2, 0xA1, 1, 200, 'A', 'B', 'C', 'D'};
    EXPECT_EQ(std::vector<unsigned char>(r.begin(), r.begin() + 16), head);
    double second;
    std::memcpy(&second, r.data() + 24, 8);
    EXPECT_EQ(second, -2.0);
    EXPECT_EQ(std::vector<unsigned char>(r.begin() + 32, r.end()), std::vector<unsigned char>(8, 0));

    r[10] = 2; // any non-zero byte is true, and a valid bool
    SProbe back;
    ProbeTable::Read(r.data(), back);
    EXPECT_EQ(back.version, 0u); // written only
    EXPECT_EQ(back.word, 0xA1B2);
    EXPECT_TRUE(back.flag);
    EXPECT_EQ(back.kind, smallB);
    EXPECT_EQ(back.name, CString("ABCD"));
    EXPECT_EQ(back.pair[1], -2.0);

    SProbe copy;
    copy.version = 7;
    ProbeTable::Copy(p, copy);
    EXPECT_EQ(copy.version, 7u);
    EXPECT_EQ(copy.name, p.name);
    EXPECT_EQ(copy.pair[0], 1.5);
}

TEST(PackedRecord, SpanReadsStopAtTheEnd)
{
    std::vector<unsigned char> bytes(50, 0);
    bytes[10 + 8] = 9;
    SProbe p;
    EXPECT_TRUE(ProbeTable::ReadAt(bytes, 10, p));
    EXPECT_EQ(p.word, 9);
    p.word = 5;
    for (size_t offset : {11u, 50u, 51u, 1000u}) {
        EXPECT_FALSE(ProbeTable::ReadAt(bytes, offset, p)) << offset;
    }
    EXPECT_EQ(p.word, 5) << "a refused read leaves the record alone";

    uint32_t word = 0;
    EXPECT_TRUE(GetAt(std::span<const unsigned char>(bytes), 46, word));
    EXPECT_FALSE(GetAt(std::span<const unsigned char>(bytes), 47, word));
    EXPECT_FALSE(GetAt(std::span<const unsigned char>(bytes), size_t(-1), word));
}
