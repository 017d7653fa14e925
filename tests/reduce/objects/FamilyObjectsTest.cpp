#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reduce/objects/CorvaneCameraInfoReduceObject.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"
#include "reduce/objects/OmbriaCameraInfoReduceObject.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

using test::ReadAt;
using test::SMemFile;
using test::WriteAt;

TEST(OmbriaFactoryCal, PayloadOffsetsAndVersion)
{
    COmbriaFactoryCalReduceObject o;
    o.adjust.nonLinearFactor = 0.25f;
    o.adjust.nonLinearZero = -12;
    o.adjust.offset = 300;
    o.adjust.gain = 1.5f;
    o.adjust.nonLinear = 1;
    o.adjust.imgLow = 10;
    o.adjust.imgHigh = 60000;
    o.calib.R = 14000.0f;
    o.calib.B = 1400.0f;
    o.calib.F = 1.0f;
    o.calib.X = 0.5f;
    o.calib.clampHighTemp = 500.0f;
    o.calib.validLowTemp = 240.0f;
    o.calib.rangeLowTemp = 230.0f;
    SMemFile mem(test::Saved(o));
    std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), COmbriaFactoryCalReduceObject::kPayloadSize);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 0), 0.25f);
    EXPECT_EQ(ReadAt<int32_t>(b, 4), -12);
    EXPECT_EQ(ReadAt<int32_t>(b, 8), 300);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 12), 1.5f);
    EXPECT_EQ(ReadAt<uint16_t>(b, 16), 1);
    EXPECT_EQ(ReadAt<uint16_t>(b, 20), 60000);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 22), 14000.0f);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 50), 0.5f);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 54), 500.0f);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 62), 240.0f);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 74), 230.0f);

    COmbriaFactoryCalReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10000, 0));
    EXPECT_EQ(test::Saved(back), b);

    // Another version is refused after clearing; a short payload fails.
    mem.Rewind();
    EXPECT_FALSE(back.Load(mem.file, 0x10001, 0));
    EXPECT_FLOAT_EQ(back.calib.R, 0.0f);
    b.resize(77);
    SMemFile cut(b);
    EXPECT_FALSE(back.Load(cut.file, 0x10000, 0));
}

TEST(OmbriaCameraInfo, BlockKeptAsItCame)
{
    COmbriaCameraInfoReduceObject o;
    for (uint32_t i = 0; i < COmbriaCameraInfoReduceObject::kInfoSize; ++i) o.info[i] = static_cast<uint8_t>(i * 7);
    o.infoFlag = true;
    std::memcpy(o.tag, "camera", 6);
    SMemFile mem(test::Saved(o));
    std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), 2462u);
    EXPECT_EQ(b[2428], 1);
    EXPECT_EQ(b[2429], 'c');
    EXPECT_EQ(b[2461], 0);
    COmbriaCameraInfoReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10000, 0));
    EXPECT_EQ(std::memcmp(back.info, o.info, sizeof o.info), 0);
    EXPECT_TRUE(back.infoFlag);
    b.pop_back();
    SMemFile cut(b);
    EXPECT_FALSE(back.Load(cut.file, 0x10000, 0));
}

TEST(TesselFactoryCal, RecordRoundTripAndOldRun)
{
    CTesselFactoryCalReduceObject t;
    t.SetFloat(tesselRecord::R, 12345.0f);
    t.SetFloat(tesselRecord::offset, 17.0f);
    t.SetText(tesselRecord::cameraName, "TS-640");
    t.record[400] = 0xAB; // bytes nobody names survive too
    SMemFile mem(test::Saved(t));
    const std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), 512u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 0), 512u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 4), 0x10001u);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 8), 12345.0f);
    EXPECT_EQ(b[96], 'T');

    CTesselFactoryCalReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10001, 0));
    EXPECT_EQ(std::memcmp(back.record, t.record, 512), 0);
    EXPECT_EQ(back.GetText(tesselRecord::cameraName), CString("TS-640"));
    for (auto [at, value] : {std::pair{0, 511u}, std::pair{4, 0x20000u}}) {
        std::vector<uint8_t> bad = b;
        WriteAt<uint32_t>(bad, at, value);
        SMemFile badFile(bad);
        EXPECT_FALSE(back.Load(badFile.file, 0x10001, 0)) << at;
    }

    // The old run: 20 floats, a UInt32, a UInt16, an Int16, then texts.
    SMemFile old;
    for (int i = 0; i < 20; ++i) old.file->PutFlt32(static_cast<float>(i));
    old.file->PutUInt32(777);
    old.file->PutUInt16(2);
    old.file->PutInt16(-5);
    old.file->PutFixedLengthString("OLD", 32);
    old.file->WriteZeros(16 + 16 + 10 + 40);
    old.Rewind();
    CTesselFactoryCalReduceObject o;
    ASSERT_TRUE(o.Load(old.file, 0x10000, 0));
    EXPECT_EQ(old.file->GetRemaining(), 0u);
    EXPECT_FLOAT_EQ(o.GetFloat(tesselRecord::gain), 18.0f);
    EXPECT_EQ(GetRecordValue<uint16_t>(o.record, tesselRecord::adjustMode), 2);
    EXPECT_EQ(GetRecordValue<int16_t>(o.record, tesselRecord::signedWord), -5);
    EXPECT_EQ(o.GetText(tesselRecord::cameraName), CString("OLD"));
    // The same run cut short fails.
    std::vector<uint8_t> run = old.bytes();
    run.resize(run.size() - 1);
    SMemFile cut(run);
    EXPECT_FALSE(o.Load(cut.file, 0x10000, 0));
}

TEST(MarloweFactoryCal, RecordOffsetsTablesAndOldStream)
{
    CMarloweFactoryCalReduceObject m;
    m.polyOrder = -2;
    for (int i = 0; i < 7; ++i) m.coeffs[i] = i + 0.5;
    m.signalOffset = 100;
    m.tableKind = 3;
    m.extra[8] = -9;
    m.rbfB = 1500;
    m.atmB2 = 0.25;
    m.maxTemperature = 120.0f;
    m.maxRadiance = 9.5f;
    m.minCounts = 5;
    m.maxCounts = 16000;
    ASSERT_TRUE(m.CreateLUT(3));
    m.tableA[2] = 4.0;
    m.tableB[0] = -1.0;

    SMemFile mem(test::Saved(m));
    const std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), 512u + 48u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 0), 512u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 4), 0x10001u);
    EXPECT_EQ(ReadAt<int32_t>(b, 8), -2);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 12 + 6 * 8), 6.5);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 68), 100.0);
    EXPECT_EQ(ReadAt<int32_t>(b, 76), 3);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 80 + 8 * 8), -9.0);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 160), 1500.0);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 208), 0.25);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 220), 120.0f);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 228), 9.5f);
    EXPECT_EQ(ReadAt<uint16_t>(b, 232), 5);
    EXPECT_EQ(ReadAt<uint16_t>(b, 234), 16000);
    EXPECT_EQ(ReadAt<int32_t>(b, 236), 3);
    for (size_t i = 240; i < 512; ++i) ASSERT_EQ(b[i], 0) << i;
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 512 + 16), 4.0);
    EXPECT_DOUBLE_EQ(ReadAt<double>(b, 512 + 24), -1.0);

    CMarloweFactoryCalReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10001, 0));
    EXPECT_EQ(test::Saved(back), b);

    // A table count beyond the stream is refused, as is another version.
    for (auto [at, value] : {std::pair{236, 0x7FFFFFFFu}, std::pair{4, 0x20000u}}) {
        std::vector<uint8_t> bad = b;
        WriteAt<uint32_t>(bad, at, value);
        SMemFile badFile(bad);
        EXPECT_FALSE(back.Load(badFile.file, 0x10001, 0)) << at;
    }

    // Duplicate copies the tables deeply.
    auto d = m.Duplicate().DynamicCast<CMarloweFactoryCalReduceObject>();
    ASSERT_TRUE(d);
    ASSERT_NE(d->tableA, m.tableA);
    EXPECT_EQ(test::Saved(*d), b);

    // The old typed stream, tables in the middle.
    SMemFile old;
    old.file->PutInt32(2);
    for (int i = 0; i < 11; ++i) old.file->PutFlt64(i);
    old.file->PutInt32(1);
    old.file->PutFlt64(8.0);
    old.file->PutFlt64(9.0);
    old.file->PutInt32(4);
    for (int i = 0; i < 14; ++i) old.file->PutFlt64(20 + i);
    for (int i = 0; i < 4; ++i) old.file->PutFlt32(30.0f + i);
    old.file->PutUInt16(1);
    old.file->PutUInt16(2);
    old.Rewind();
    CMarloweFactoryCalReduceObject o;
    ASSERT_TRUE(o.Load(old.file, 0x10000, 0));
    EXPECT_DOUBLE_EQ(o.rbfF, 10.0);
    EXPECT_DOUBLE_EQ(o.tableB[0], 9.0);
    EXPECT_EQ(o.tableKind, 4);
    EXPECT_DOUBLE_EQ(o.atmB2, 33.0);
    EXPECT_FLOAT_EQ(o.maxRadiance, 33.0f);
    EXPECT_EQ(o.maxCounts, 2);
    // A count below 1 frees the tables and still succeeds.
    EXPECT_TRUE(o.CreateLUT(-4));
    EXPECT_EQ(o.tableA, nullptr);
    EXPECT_EQ(o.tableSize, 0);
}

TEST(CorvaneObjects, FieldRunsAndVersionedFlag)
{
    CCorvaneFactoryCalReduceObject c;
    c.curveType = 3;
    c.g = -0.5f;
    c.maxCounts = 65535;
    c.integrationTime = 250.0f;
    SMemFile mem(test::Saved(c));
    std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), CCorvaneFactoryCalReduceObject::kPayloadSize);
    EXPECT_EQ(ReadAt<uint32_t>(b, 0), 3u);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 28), -0.5f);
    EXPECT_EQ(ReadAt<uint32_t>(b, 36), 65535u);
    EXPECT_FLOAT_EQ(ReadAt<float>(b, 52), 250.0f);
    CCorvaneFactoryCalReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10000, 0));
    EXPECT_EQ(test::Saved(back), b);
    b.resize(55);
    SMemFile cut(b);
    EXPECT_FALSE(back.Load(cut.file, 0x10000, 0));

    CCorvaneCameraInfoReduceObject info;
    std::memcpy(info.texts[1], "01234567890123456789", 20); // a full field
    std::memcpy(info.shortText, "v1.2", 4);
    info.values[3] = 2.5f;
    info.intValue = -7;
    info.bytes[3] = 9;
    info.flag = true;
    SMemFile im(test::Saved(info));
    std::vector<uint8_t> ib = im.bytes();
    ASSERT_EQ(ib.size(), CCorvaneCameraInfoReduceObject::kPayloadSizeV1 + 1);
    EXPECT_EQ(ib[20], '0');
    EXPECT_FLOAT_EQ(ReadAt<float>(ib, 91 + 12), 2.5f);
    EXPECT_EQ(ReadAt<int32_t>(ib, 108), -7);
    EXPECT_EQ(ib.back(), 1);

    CCorvaneCameraInfoReduceObject back2;
    ASSERT_TRUE(back2.Load(im.file, 0x10001, 0));
    EXPECT_EQ(test::Saved(back2), ib);
    // Version 1.0 has no flag: the same bytes without it load with flag false.
    ib.pop_back();
    SMemFile v1(ib);
    ASSERT_TRUE(back2.Load(v1.file, 0x10000, 0));
    EXPECT_FALSE(back2.flag);
    EXPECT_EQ(back2.bytes[3], 9);
    SMemFile v1short(ib);
    EXPECT_FALSE(back2.Load(v1short.file, 0x10001, 0));
}

} // namespace
} // namespace orv::reduce
