// The reduction from a recording file to frames in a unit, and the block
// verification, on small recordings written here with a known calibration.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>
#include <unistd.h>

#include "orv/PixelType.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "reduce/store/RecordingReduction.h"
#include "reduce/store/VerifyRecording.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned kW = 5, kH = 3, kFrames = 4;
// Radiance = kC0 + kC1 * counts; the table maps radiance r to r / 10 degrees
// Celsius, so the temperature of a counts value c is (kC0 + kC1 c) / e / 10.
constexpr double kC0 = 1.0, kC1 = 0.25, kEmissivity = 0.8;

uint16_t Counts(unsigned frame, unsigned pixel) { return static_cast<uint16_t>(400 + 40 * frame + 7 * pixel); }

void Fill(CReduceObjectArray& objs)
{
    auto info = objs.GetSourceInfo(true);
    info->pixelType = pixelGrayscale;
    info->dataType = dtUInt16;
    info->baseUnit = unitCounts;
    info->imageWidth = info->frameWidth = kW;
    info->imageHeight = info->frameHeight = kH;
    info->numPresets = 1;
    info->presets[0].available = info->presets[0].calibrated = true;
    info->valid = true;
    auto params = objs.GetObjectParameters(true);
    params->emissivity = static_cast<float>(kEmissivity);
    params->distance = 3.0f;
    params->estAtmosphericTransmission = 0.0f;
    params->source = params->valid = true;
    auto rcal = objs.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
    CRCalFile& cal = rcal->rcal;
    cal.DefaultCal();
    ASSERT_TRUE(cal.SetBandpass(8, 14));
    ASSERT_TRUE(cal.SetCoefficients(0, 1, TArray<double>{kC0, kC1}));
    ASSERT_TRUE(cal.SetLookup(0, TArray<double>{0, 5000}, TArray<double>{0, 500}));
    rcal->valid = true;
}

void Write(TSharedPtr<IFile> file)
{
    CReduceObjectArray objs;
    Fill(objs);
    ASSERT_TRUE(StartQRTFile(file, objs, true));
    for (unsigned f = 0; f < kFrames; ++f)
        for (unsigned p = 0; p < kW * kH; ++p) file->PutUInt16(Counts(f, p));
    unsigned counts[4] = {kFrames, 0, 0, 0};
    ASSERT_TRUE(FinishQRTFile(file, counts, true));
}

class RecordingReductionTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/orv-reduction-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        path = dir + "/rec.qrt";
        TSharedPtr<IFile> file =
            fileSystem()->Open(path.c_str(), unsigned(IFileSystem::modeRead) | unsigned(IFileSystem::openWrite));
        ASSERT_TRUE(file);
        Write(file);
    }
    void TearDown() override { std::system(("rm -rf " + dir).c_str()); }

    std::vector<unsigned char> Bytes() const
    {
        std::vector<unsigned char> b;
        if (FILE* f = std::fopen(path.c_str(), "rb")) {
            for (int c; (c = std::fgetc(f)) != EOF;) b.push_back(static_cast<unsigned char>(c));
            std::fclose(f);
        }
        return b;
    }
    void Put(const std::vector<unsigned char>& b) const
    {
        FILE* f = std::fopen(path.c_str(), "wb");
        std::fwrite(b.data(), 1, b.size(), f);
        std::fclose(f);
    }

    std::string dir, path;
};

bool Says(const CString& text, const char* words) { return std::strstr(text.c_str(), words) != nullptr; }

} // namespace

TEST_F(RecordingReductionTest, EveryUnitAgainstTheCalibration)
{
    CRecordingReduction r;
    ASSERT_TRUE(r.Open(CString(path.c_str()))) << r.lastError().c_str();
    ASSERT_EQ(r.numFrames(), kFrames);
    ASSERT_EQ(r.pixels(), size_t(kW * kH));
    EXPECT_EQ(r.units()[0], unitCounts);
    EXPECT_TRUE(r.offersUnit(unitRadianceUser) && r.offersUnit(unitTemperatureUser));

    std::vector<float> v(kW * kH);
    std::vector<unsigned char> s(kW * kH, 0xAA);
    struct SCase {
        EUnit unit;
        ETempType scale;
        double emissivity; // the override; below 0 the recording's own
        double offset;     // added to Celsius
    } cases[] = {
        {unitCounts, tempCelsius, -1, 0},        {unitRadianceUser, tempCelsius, -1, 0},
        {unitTemperatureUser, tempCelsius, -1, 0}, {unitTemperatureUser, tempKelvin, 0.5, 273.15},
        {unitTemperatureUser, tempKelvin, -1, 273.15},
    };
    for (const SCase& c : cases) {
        ASSERT_TRUE(r.SetUnit(c.unit, c.scale)) << r.lastError().c_str();
        ASSERT_TRUE(r.SetObjectParameters(c.emissivity, -1)) << r.lastError().c_str();
        const double e = c.emissivity < 0 ? kEmissivity : c.emissivity;
        for (unsigned f : {2u, 0u, 3u}) {
            ASSERT_TRUE(r.Reduce(f, v.data(), s.data(), v.size())) << r.lastError().c_str();
            for (unsigned p = 0; p < kW * kH; ++p) {
                const double counts = Counts(f, p), radiance = kC0 + kC1 * counts;
                const double want = c.unit == unitCounts         ? counts
                                    : c.unit == unitRadianceUser ? radiance
                                                                 : radiance / e / 10 + c.offset;
                EXPECT_NEAR(v[p], want, 1e-3 * std::fabs(want)) << UnitToString(c.unit) << " " << f << " " << p;
                EXPECT_EQ(s[p], 0) << p;
            }
        }
    }

    // Frame info without pixels, and the raw pixels of the last Decode.
    ASSERT_TRUE(r.Decode(1));
    ASSERT_TRUE(r.FrameInfo(3)) << r.lastError().c_str();
    EXPECT_EQ(r.decodedFrame(), 1u);
    EXPECT_EQ(static_cast<const uint16_t*>(r.raw().data)[4], Counts(1, 4));
}

TEST_F(RecordingReductionTest, ClonesReduceIndependentlyOnTheirOwnThreads)
{
    CRecordingReduction r;
    ASSERT_TRUE(r.Open(CString(path.c_str())));
    ASSERT_TRUE(r.SetUnit(unitTemperatureUser, tempFahrenheit));
    ASSERT_TRUE(r.SetObjectParameters(0.6, 10));
    std::vector<std::unique_ptr<CRecordingReduction>> twins;
    for (int i = 0; i < 3; ++i) {
        twins.push_back(r.Clone());
        ASSERT_TRUE(twins.back());
        EXPECT_EQ(twins.back()->unit(), unitTemperatureUser);
        EXPECT_EQ(twins.back()->scale(), tempFahrenheit);
    }
    std::vector<float> want(kFrames * kW * kH), got[3];
    std::vector<unsigned char> s(kW * kH);
    for (unsigned f = 0; f < kFrames; ++f) ASSERT_TRUE(r.Reduce(f, &want[f * kW * kH], s.data(), kW * kH));
    EXPECT_NEAR(want[0], ((kC0 + kC1 * Counts(0, 0)) / 0.6 / 10) * 1.8 + 32, 1e-2);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&, t] {
            got[t].resize(want.size());
            std::vector<unsigned char> st(kW * kH);
            for (int round = 0; round < 20; ++round)
                for (unsigned f = 0; f < kFrames; ++f)
                    twins[t]->Reduce((f + t) % kFrames, &got[t][((f + t) % kFrames) * kW * kH], st.data(), kW * kH);
        });
    for (auto& th : threads) th.join();
    for (int t = 0; t < 3; ++t) EXPECT_EQ(got[t], want) << t;
}

TEST_F(RecordingReductionTest, FailuresSayWhy)
{
    CRecordingReduction r;
    std::vector<float> v(kW * kH);
    std::vector<unsigned char> s(kW * kH);
    EXPECT_FALSE(r.Reduce(0, v.data(), s.data(), v.size()));
    EXPECT_TRUE(Says(r.lastError(), "no recording is open"));
    EXPECT_FALSE(r.Open(CString((dir + "/none.qrt").c_str())));
    EXPECT_TRUE(Says(r.lastError(), "cannot open"));

    ASSERT_TRUE(r.Open(CString(path.c_str())));
    EXPECT_FALSE(r.SetUnit(unitRGB24, tempCelsius));
    EXPECT_TRUE(Says(r.lastError(), "it offers: Counts, ")) << r.lastError().c_str();
    EXPECT_EQ(r.unit(), unitCounts);
    EXPECT_FALSE(r.SetUnit(unitTemperatureUser, static_cast<ETempType>(7)));
    for (double e : {0.0, 1.5, double(NAN)}) {
        EXPECT_FALSE(r.SetObjectParameters(e, -1)) << e;
        EXPECT_TRUE(Says(r.lastError(), "emissivity")) << e;
    }
    EXPECT_FALSE(r.SetObjectParameters(-1, INFINITY));
    EXPECT_FALSE(r.Reduce(0, v.data(), s.data(), v.size() - 1));
    EXPECT_TRUE(Says(r.lastError(), "cannot hold a 5x3 frame")) << r.lastError().c_str();
    EXPECT_FALSE(r.Reduce(0, nullptr, s.data(), v.size()));
    EXPECT_FALSE(r.Reduce(kFrames, v.data(), s.data(), v.size()));
    EXPECT_TRUE(Says(r.lastError(), "frame 4: frame 4 is out of range")) << r.lastError().c_str();
    EXPECT_FALSE(r.FrameInfo(kFrames));
    EXPECT_TRUE(r.Reduce(0, v.data(), s.data(), v.size()));
    EXPECT_TRUE(r.lastError().empty());

    // Opened from an open file there is no path to clone from.
    TSharedPtr<IFile> file = fileSystem()->Open(path.c_str(), IFileSystem::openRead);
    ASSERT_TRUE(r.Open(file));
    CRecordingReduction twin;
    EXPECT_FALSE(twin.OpenClone(r));
    EXPECT_TRUE(Says(twin.lastError(), "opened from an open file"));
    EXPECT_FALSE(r.Clone());

    // A recording without frames.
    std::vector<unsigned char> b = Bytes();
    b.resize(b.size() - kFrames * kW * kH * 2);
    Put(b);
    EXPECT_FALSE(r.Open(CString(path.c_str())));
    EXPECT_TRUE(Says(r.lastError(), "no whole frame")) << r.lastError().c_str();
    EXPECT_FALSE(r.isOpen());
}

TEST_F(RecordingReductionTest, VerifierReportsEveryBlock)
{
    CRecordingVerifier v;
    ASSERT_TRUE(v.Verify(CString(path.c_str()))) << v.lastError().c_str();
    EXPECT_EQ(v.numFrames(), kFrames);
    const std::vector<unsigned char> good = Bytes();
    const TArray<SBlockCheck>& blocks = v.blocks();
    ASSERT_GE(blocks.size(), 3u);
    size_t rcal = blocks.size();
    for (size_t i = 0; i < blocks.size(); ++i) {
        const SBlockCheck& b = blocks[i];
        EXPECT_TRUE(b.ok && b.reason.empty()) << i;
        const bool last = i + 1 == blocks.size();
        EXPECT_EQ(b.crcChecked, !last) << i;
        if (last) {
            EXPECT_EQ(b.name, CString("Pixels"));
            continue;
        }
        // The stored CRC is the 4 bytes at offset 73 of the block header.
        uint32_t stored = 0;
        std::memcpy(&stored, &good[b.offset + 73], 4);
        EXPECT_EQ(b.storedCrc, stored) << i;
        EXPECT_EQ(b.computedCrc, CalcCRC32(0, &good[b.offset + 77], static_cast<unsigned long>(b.size))) << i;
        if (b.typeID == CRCalReduceObject::typeID) rcal = i;
    }
    ASSERT_LT(rcal, blocks.size());

    // One flipped payload byte: that block alone is bad.
    std::vector<unsigned char> b = good;
    b[blocks[rcal].offset + 77 + 10] ^= 0x40;
    Put(b);
    EXPECT_FALSE(v.Verify(CString(path.c_str())));
    EXPECT_EQ(v.badBlocks(), 1u);
    for (size_t i = 0; i < v.blocks().size(); ++i) EXPECT_EQ(v.blocks()[i].ok, i != rcal) << i;
    EXPECT_TRUE(Says(v.blocks()[rcal].reason, "CRC")) << v.blocks()[rcal].reason.c_str();
    EXPECT_TRUE(Says(v.lastError(), "1 bad block"));

    // Cut inside that block, and inside the last frame.
    b = good;
    b.resize(blocks[rcal].offset + 77 + 20);
    Put(b);
    EXPECT_FALSE(v.Verify(CString(path.c_str())));
    EXPECT_EQ(v.blocks().size(), rcal + 1);
    EXPECT_TRUE(Says(v.blocks()[rcal].reason, "the file ends 20 bytes into it")) << v.blocks()[rcal].reason.c_str();
    b = good;
    b.resize(good.size() - 3);
    Put(b);
    EXPECT_FALSE(v.Verify(CString(path.c_str())));
    EXPECT_TRUE(Says(v.lastError(), "last frame is cut short: 27 of 30 bytes")) << v.lastError().c_str();
}

// Blocks arrive in frame order whatever the threads, hold what Reduce gives
// frame by frame, and a receiver that stops ends the run.
TEST_F(RecordingReductionTest, FramesInBlocksOnSeveralThreadsMatchFrameByFrame)
{
    CRecordingReduction r;
    ASSERT_TRUE(r.Open(CString(path.c_str())));
    ASSERT_TRUE(r.SetUnit(unitTemperatureUser, tempKelvin));
    const size_t n = kW * kH;
    std::vector<float> want(kFrames * n);
    std::vector<unsigned char> wantStatus(kFrames * n);
    for (unsigned f = 0; f < kFrames; ++f) ASSERT_TRUE(r.Reduce(f, &want[f * n], &wantStatus[f * n], n));
    for (unsigned threads : {1u, 3u, 0u})
        for (uint64_t block : {1u, 3u, 0u}) {
            std::vector<float> got;
            std::vector<unsigned char> status;
            uint64_t next = 1;
            ASSERT_TRUE(r.ReduceFrames(1, kFrames, threads, [&](uint64_t first, uint64_t count, const float* v,
                                                                 const unsigned char* s) {
                EXPECT_EQ(first, next);
                next = first + count;
                got.insert(got.end(), v, v + count * n);
                status.insert(status.end(), s, s + count * n);
                return true;
            }, block)) << r.lastError().c_str();
            EXPECT_EQ(got, std::vector<float>(want.begin() + n, want.end())) << threads << " " << block;
            EXPECT_EQ(status, std::vector<unsigned char>(wantStatus.begin() + n, wantStatus.end()));
        }
    // Straight into the caller's arrays, status only for odd blocks: the
    // sink sees the target's pointers, the rest lands in the reduction's own.
    for (unsigned threads : {1u, 3u}) {
        std::vector<float> got(kFrames * n, -1.0f);
        std::vector<unsigned char> status(kFrames * n, 0xEE);
        std::atomic<int> targets{0};
        ASSERT_TRUE(r.ReduceFrames(
            0, kFrames, threads,
            [&](uint64_t first, uint64_t, const float* v, const unsigned char* s) {
                EXPECT_EQ(v, &got[first * n]);
                EXPECT_EQ(s == &status[first * n], first % 2 == 1);
                return true;
            },
            1, [&](uint64_t first, uint64_t count, float*& v, unsigned char*& s) {
                ++targets;
                EXPECT_EQ(count, 1u);
                v = &got[first * n];
                if (first % 2) s = &status[first * n];
            }));
        EXPECT_EQ(targets, int(kFrames));
        EXPECT_EQ(got, want);
        for (unsigned f = 0; f < kFrames; ++f)
            for (size_t i = 0; i < n; ++i)
                ASSERT_EQ(status[f * n + i], f % 2 ? wantStatus[f * n + i] : 0xEE) << f;
    }
    int calls = 0;
    EXPECT_FALSE(r.ReduceFrames(0, kFrames, 2, [&](uint64_t, uint64_t, const float*, const unsigned char*) {
        return ++calls < 2;
    }, 1));
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(Says(r.lastError(), "stopped at frame 1"));
    EXPECT_FALSE(r.ReduceFrames(2, kFrames + 1, 2, [](uint64_t, uint64_t, const float*, const unsigned char*) {
        return true;
    }));
    EXPECT_TRUE(Says(r.lastError(), "out of range"));
    EXPECT_TRUE(r.ReduceFrames(2, 2, 2, [](uint64_t, uint64_t, const float*, const unsigned char*) { return false; }));
}
