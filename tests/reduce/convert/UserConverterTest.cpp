#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "reduce/convert/ConvertContext.h"
#include "reduce/convert/UserConverter.h"
#include "tests/reduce/convert/Recording.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

constexpr unsigned short kW = 40, kH = 30;
constexpr EMethod kMethods[] = {EMethod::lookup, EMethod::coefficients, EMethod::planck};

// Float results carry about seven digits.
void ExpectClose(float actual, double expected, const char* what, size_t i)
{
    EXPECT_NEAR(actual, expected, 2e-5 * std::fabs(expected) + 2e-4) << what << " at element " << i;
}

struct SRecording {
    CReduceObjectArray objs;
    SUserCal cal;
    std::vector<unsigned short> frame;

    explicit SRecording(EMethod method)
    {
        AddSourceInfo(objs, unitCounts, kW, kH);
        TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(true);
        params->emissivity = 0.95f;
        params->estAtmosphericTransmission = 0.8f;
        cal.Apply(AddCalibration(objs)->rcal, 0, method);
        frame.resize(size_t(kW) * kH);
        for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<unsigned short>(2000 + (i * 97) % 12000);
    }
    STypedData src() { return STypedData(frame.data(), dtUInt16); }
};

// The region forms of the context, each with and without a preset index
// array. Each gives the call and, worked out here by plain loops, the flat
// indices of the pixels it yields in output order.
enum class ERegion { frame, rect, lines, mask, indices };
constexpr ERegion kRegions[] = {ERegion::frame, ERegion::rect, ERegion::lines, ERegion::mask, ERegion::indices};

const char* RegionName(ERegion r)
{
    switch (r) {
    case ERegion::frame: return "frame";
    case ERegion::rect: return "rectangle";
    case ERegion::lines: return "scan lines";
    case ERegion::mask: return "mask";
    default: return "index list";
    }
}

struct SRegion {
    static constexpr unsigned kStride = 50; // the mask's own row stride
    const SArea area{3, 5, 7, 12};           // rows 3..7, columns 5..12
    const SArea maskArea{10, 10, 20, 25};
    const TArray<SScanLine> lines{{9, 30, 33}, {2, 0, 1}, {9, 4, 4}, {kH - 1, kW - 2, kW - 1}};
    const std::vector<unsigned> indices{kW * kH - 1, 0, 640, 640, 17};
    std::vector<unsigned char> mask = std::vector<unsigned char>(size_t(kStride) * kH, 0);
    std::vector<unsigned char> presetIndex = std::vector<unsigned char>(size_t(kW) * kH, 0);

    SRegion()
    {
        for (unsigned y = 0; y < kH; ++y)
            for (unsigned x = 0; x < kStride; ++x) mask[y * kStride + x] = (x + y) % 3 == 0;
    }

    std::vector<size_t> Flat(ERegion r) const
    {
        std::vector<size_t> flat;
        switch (r) {
        case ERegion::frame:
            for (size_t i = 0; i < size_t(kW) * kH; ++i) flat.push_back(i);
            break;
        case ERegion::rect:
            for (unsigned y = area.top; y <= area.bottom; ++y)
                for (unsigned x = area.left; x <= area.right; ++x) flat.push_back(size_t(y) * kW + x);
            break;
        case ERegion::lines:
            for (const SScanLine& l : lines)
                for (unsigned x = l.first; x <= l.last; ++x) flat.push_back(size_t(l.row) * kW + x);
            break;
        case ERegion::mask:
            for (unsigned y = maskArea.top; y <= maskArea.bottom; ++y)
                for (unsigned x = maskArea.left; x <= maskArea.right; ++x)
                    if (mask[y * kStride + x]) flat.push_back(size_t(y) * kW + x);
            break;
        case ERegion::indices:
            flat.assign(indices.begin(), indices.end());
            break;
        }
        return flat;
    }

    bool Convert(CConvertContext& ctx, ERegion r, bool withPresets, STypedData src, STypedData dst,
                 unsigned char* status) const
    {
        const unsigned char* p = presetIndex.data();
        const unsigned n = unsigned(indices.size());
        switch (r) {
        case ERegion::frame:
            return withPresets ? ctx.Convert(src, p, dst, status, unsigned(kW) * kH)
                               : ctx.Convert(src, dst, status, unsigned(kW) * kH);
        case ERegion::rect:
            return withPresets ? ctx.Convert(src, p, kW, kH, area, dst, status)
                               : ctx.Convert(src, kW, kH, area, dst, status);
        case ERegion::lines:
            return withPresets ? ctx.Convert(src, p, kW, kH, lines, dst, status)
                               : ctx.Convert(src, kW, kH, lines, dst, status);
        case ERegion::mask:
            return withPresets ? ctx.Convert(src, p, kW, kH, maskArea, mask.data(), kStride, dst, status)
                               : ctx.Convert(src, kW, kH, maskArea, mask.data(), kStride, dst, status);
        default:
            return withPresets ? ctx.Convert(src, p, indices.data(), n, dst, status)
                               : ctx.Convert(src, indices.data(), n, dst, status);
        }
    }
};

} // namespace

// Counts to "Temperature (User)" through the context, by each temperature
// method, in each scale, on the table path and on the direct path (a
// per-pixel background forces it; the order 2 polynomial does not read it),
// for every region form with and without per-pixel presets, against the
// formulas evaluated here; then the same after a new emissivity and
// transmission, which take effect without an Update.
TEST(UserConverter, EndToEndTemperatureThroughTheContext)
{
    const SRegion regions;
    for (EMethod method : kMethods)
        for (ETempType scale : {tempCelsius, tempKelvin, tempFahrenheit, tempRankine})
            for (bool direct : {false, true}) {
                SRecording rec(method);
                if (direct) {
                    TArray<double> image;
                    for (unsigned i = 0; i < unsigned(kW) * kH; ++i) image.add(50.0 + i % 13);
                    ASSERT_TRUE(AddCalibration(rec.objs)->rcal.SetBackgroundImage(0, kW, kH, image));
                }
                CConvertContext ctx;
                ctx.setReduceObjs(&rec.objs);
                ASSERT_TRUE(ctx.SetUnit(ParseUnit("Temperature (User)"), scale));
                ASSERT_EQ(ctx.converter()->name(), CString("UserConverter"));
                bool presets[1] = {true};
                ASSERT_TRUE(ctx.Update(presets, 1, 0));
                ASSERT_EQ(ctx.converter()->canUseLUT(), !direct);

                double emissivity = double(0.95f), transmission = double(0.8f);
                for (int phase = 0; phase < 2; ++phase) {
                    if (phase == 1) {
                        CObjectParametersReduceObject changed;
                        changed.emissivity = 0.8f;
                        changed.estAtmosphericTransmission = 0.5f;
                        ASSERT_TRUE(ctx.ChangeObjectParameters(&changed));
                        emissivity = double(0.8f);
                        transmission = 0.5;
                    }
                    for (ERegion r : kRegions)
                        for (bool withPresets : {false, true}) {
                            SCOPED_TRACE(testing::Message()
                                         << "method " << int(method) << ", scale " << int(scale)
                                         << (direct ? ", direct" : ", table") << ", phase " << phase << ", "
                                         << RegionName(r) << (withPresets ? " with presets" : ""));
                            const std::vector<size_t> flat = regions.Flat(r);
                            // One element more than the region yields: it must stay as it was.
                            std::vector<float> out(flat.size() + 1, -1.0f);
                            std::vector<unsigned char> status(flat.size() + 1, 9);
                            ASSERT_TRUE(regions.Convert(ctx, r, withPresets, rec.src(),
                                                        STypedData(out.data(), dtFlt32), status.data()));
                            size_t bad = 0, first = 0;
                            for (size_t i = 0; i < flat.size(); ++i) {
                                const double expected =
                                    rec.cal.Expected(rec.frame[flat[i]], method, emissivity, 1.0 / transmission, scale);
                                if (!(std::fabs(out[i] - expected) <= 2e-5 * std::fabs(expected) + 2e-4) ||
                                    status[i] != 0)
                                    if (bad++ == 0) first = i;
                            }
                            EXPECT_EQ(bad, 0u) << "first at output element " << first << " (pixel " << flat[first]
                                               << "): " << out[first] << ", status " << int(status[first]);
                            EXPECT_EQ(out.back(), -1.0f);
                            EXPECT_EQ(status.back(), 9);
                        }
                }
            }
}

// The direct path (a per-pixel background forces it) gives the formulas too,
// for every region form, with and without a preset index array.
TEST(UserConverter, PerPixelBackgroundTakesTheDirectPath)
{
    SRecording rec(EMethod::coefficients);
    CRCalFile& file = AddCalibration(rec.objs)->rcal;
    const double c0 = 0.0005, c1 = 4.0e-7;
    file.SetCoefficients(0, -2, TArray<double>{c0, c1});
    TArray<double> image;
    for (unsigned i = 0; i < unsigned(kW) * kH; ++i) image.add(100.0 + i % 37);
    ASSERT_TRUE(file.SetBackgroundImage(0, kW, kH, image));

    CConvertContext ctx;
    ctx.setReduceObjs(&rec.objs);
    ASSERT_TRUE(ctx.SetUnit(unitTemperatureUser, tempKelvin));
    bool presets[1] = {true};
    ASSERT_TRUE(ctx.Update(presets, 1, 0));
    auto* user = dynamic_cast<CUserConverter*>(ctx.converter().get());
    ASSERT_NE(user, nullptr);
    EXPECT_TRUE(user->usesBackgroundImage);
    EXPECT_TRUE(user->needIndicies());
    EXPECT_FALSE(user->canUseLUT());

    // Radiance is held in the destination's type on the way.
    auto expected = [&](size_t flat, bool viaFloat = true) {
        double L = (c1 * (rec.frame[flat] - image[flat]) + c0) / double(0.8f);
        if (viaFloat) L = float(L);
        return rec.cal.Temperature(L, EMethod::coefficients, double(0.95f), tempKelvin);
    };
    const size_t n = rec.frame.size();
    std::vector<double> out(n);
    std::vector<unsigned char> status(n, 7);
    ASSERT_TRUE(ctx.Convert(rec.src(), STypedData(out.data(), dtFlt64), status.data(), unsigned(n)));
    for (size_t i = 0; i < n; ++i) {
        EXPECT_NEAR(out[i], expected(i, false), 1e-9 * std::fabs(expected(i, false)) + 1e-6) << i;
        EXPECT_EQ(status[i], 0);
    }

    std::vector<unsigned char> presetIndex(n, 0);
    std::vector<float> f(n);
    ASSERT_TRUE(ctx.Convert(rec.src(), presetIndex.data(), STypedData(f.data(), dtFlt32), nullptr, unsigned(n)));
    for (size_t i = 0; i < n; ++i) ExpectClose(f[i], expected(i), "PS frame", i);

    const unsigned indices[] = {5, 1000, 77};
    ASSERT_TRUE(ctx.Convert(rec.src(), indices, 3, STypedData(f.data(), dtFlt32), nullptr));
    for (size_t i = 0; i < 3; ++i) ExpectClose(f[i], expected(indices[i]), "indices", i);

    status.assign(n, 7);
    ASSERT_TRUE(ctx.Convert(rec.src(), presetIndex.data(), kW, kH, SArea{1, 2, 2, 4}, STypedData(f.data(), dtFlt32),
                            status.data()));
    const size_t rect[] = {kW + 2, kW + 3, kW + 4, 2 * kW + 2, 2 * kW + 3, 2 * kW + 4};
    for (size_t i = 0; i < 6; ++i) {
        ExpectClose(f[i], expected(rect[i]), "PS rect", i);
        EXPECT_EQ(status[i], 0);
    }
    EXPECT_EQ(status[6], 7); // only the region's bytes are cleared

    // A range of counts has no position for the image.
    float range[4];
    EXPECT_FALSE(user->SignalToOutput(100, 103, range, nullptr, 0));

    // Pixels beyond the recording's frame have no background: refused
    // before anything is written, in every form.
    f[0] = -3.0f;
    const unsigned outside[] = {0, unsigned(n)};
    EXPECT_FALSE(ctx.Convert(rec.src(), STypedData(f.data(), dtFlt32), nullptr, unsigned(n) + 1));
    EXPECT_FALSE(ctx.Convert(rec.src(), outside, 2, STypedData(f.data(), dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(rec.src(), presetIndex.data(), outside, 2, STypedData(f.data(), dtFlt32), nullptr));
    EXPECT_FALSE(user->BaseToOutput(rec.src(), kW + 1, kH, SArea{kH - 1, 0, kH - 1, kW}, STypedData(f.data(), dtFlt32),
                                    nullptr));
    EXPECT_EQ(f[0], -3.0f);
    // So are regions outside the frame, by the context, also on the table path.
    EXPECT_FALSE(ctx.Convert(rec.src(), kW, kH, SArea{0, 0, kH, 0}, STypedData(f.data(), dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(rec.src(), kW, kH, TArray<SScanLine>{{0, 0, kW}}, STypedData(f.data(), dtFlt32), nullptr));
    EXPECT_EQ(f[0], -3.0f);
    // A rectangle with its columns crossed is empty: true, and no status
    // byte is cleared.
    status.assign(n, 7);
    EXPECT_TRUE(ctx.Convert(rec.src(), kW, kH, SArea{0, 5, 2, 4}, STypedData(f.data(), dtFlt32), status.data()));
    EXPECT_EQ(status[0], 7);
}

TEST(UserConverter, UpdateReadsBackgroundsOnceAndDegradesToZero)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 4, 2);
    CRCalFile& file = AddCalibration(objs)->rcal;
    SUserCal().Apply(file, 0, EMethod::planck);
    SUserCal().Apply(file, 1, EMethod::planck);
    ASSERT_TRUE(file.SetBackgroundImage(0, 4, 2, TArray<double>{1, 2, 3, 4, 5, 6, 7, 8}));
    ASSERT_TRUE(file.SetBackgroundImage(1, 8, 1, TArray<double>{1, 2, 3, 4, 5, 6, 7, 8})); // not the frame's size

    CUserConverter user;
    bool presets[2] = {true, true};
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
    EXPECT_TRUE(user.usesBackgroundImage);
    EXPECT_FALSE(user.canUseLUT());
    EXPECT_TRUE(user.hasBackgroundFile[0]);
    EXPECT_DOUBLE_EQ(user.backgroundImage[0][7], 8.0);
    // The image that does not fit becomes a zero image of the frame's size.
    EXPECT_FALSE(user.hasBackgroundFile[1]);
    EXPECT_TRUE(user.backgroundZero[1]);
    ASSERT_EQ(user.backgroundImage[1].size(), 8u);
    for (double v : user.backgroundImage[1]) EXPECT_EQ(v, 0.0);
    EXPECT_EQ(user.radianceParams[0].backgroundImage, user.backgroundImage[0].data());

    // Same CRC: the image in hand is kept, not read again.
    user.backgroundImage[0][0] = -1.0;
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
    EXPECT_DOUBLE_EQ(user.backgroundImage[0][0], -1.0);
    // A new image: read again.
    ASSERT_TRUE(file.SetBackgroundImage(0, 4, 2, TArray<double>{9, 2, 3, 4, 5, 6, 7, 8}));
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
    EXPECT_DOUBLE_EQ(user.backgroundImage[0][0], 9.0);

    // A background is indexed by frame position: an image that is not the
    // frame makes the preset unusable, and no zero image is made for it.
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    info->frameWidth = 4;
    info->frameHeight = 2;
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
    for (uint16_t size : {uint16_t(2), uint16_t(65535)}) {
        info->imageWidth = info->imageHeight = size;
        CUserConverter fresh;
        EXPECT_FALSE(fresh.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
        EXPECT_LE(fresh.backgroundImage[1].size(), 8u);
    }

    // Without a calibration object Update fails.
    CReduceObjectArray bare;
    AddSourceInfo(bare, unitCounts, 4, 2);
    CUserConverter other;
    EXPECT_FALSE(other.Update(unitCounts, tempCelsius, bare, unitTemperatureUser, tempCelsius, presets, 2, 0));
}

TEST(UserConverter, TransmissionEmissivityAndTableRebuild)
{
    SRecording rec(EMethod::coefficients);
    TSharedPtr<CObjectParametersReduceObject> params = rec.objs.GetObjectParameters(false);
    params->estAtmosphericTransmission = 0.0f;
    params->atmosphericTransmission = 0.25f;

    CUserConverter user;
    bool presets[1] = {true};
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, rec.objs, unitRadianceUser, tempCelsius, presets, 1, 0));
    EXPECT_EQ(user.invTransmission, 1.0);
    EXPECT_EQ(params->atmosphericTransmission, 1.0f);
    EXPECT_DOUBLE_EQ(user.emissivity, double(0.95f));

    float value = 0;
    unsigned short counts = 5000;
    ASSERT_TRUE(user.BaseToOutput(STypedData(&counts, dtUInt16), STypedData(&value, dtFlt32), nullptr, 1));
    EXPECT_FLOAT_EQ(value, float(rec.cal.Radiance(5000, 1.0)));

    // Transmission 0.5 doubles the radiance, on the next frame already.
    CObjectParametersReduceObject changed;
    changed.estAtmosphericTransmission = 0.5f;
    ASSERT_TRUE(user.ChangeObjectParameters(&changed));
    EXPECT_EQ(user.invTransmission, 2.0);
    EXPECT_EQ(changed.atmosphericTransmission, 0.5f);
    EXPECT_EQ(user.commonParams.scale, 2.0);
    ASSERT_TRUE(user.BaseToOutput(STypedData(&counts, dtUInt16), STypedData(&value, dtFlt32), nullptr, 1));
    EXPECT_FLOAT_EQ(value, float(rec.cal.Radiance(5000, 2.0)));

    // The range form agrees with the table.
    float range[3];
    unsigned char status[3] = {9, 9, 9};
    ASSERT_TRUE(user.SignalToOutput(4999, 5001, range, status, 255));
    EXPECT_FLOAT_EQ(range[1], value);
    EXPECT_EQ(status[0] + status[1] + status[2], 0);
    EXPECT_FALSE(user.SignalToOutput(4999, 5001, range, status, 3)); // preset 3 is not active
    EXPECT_FALSE(user.ChangeObjectParameters(nullptr));

    // OutputToSignal only answers whether the preset is active.
    unsigned short signal = 77;
    unsigned char st = 9;
    EXPECT_TRUE(user.OutputToSignal(1.0f, signal, st, 255));
    EXPECT_FALSE(user.OutputToSignal(1.0f, signal, st, 1));
    EXPECT_EQ(signal, 77);
    EXPECT_EQ(st, 9);
    EXPECT_FALSE(user.BaseToOutput(1.0f, value, st, 0));
    EXPECT_FALSE(user.SignalToOutput(1, value, st, 0));
}

// Preset 0 has a table, preset 1 only coefficients: the polynomial serves
// both on the array path, and per-pixel presets pick their own tables.
TEST(UserConverter, MixedPresetsShareOneTemperatureMethod)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 4, 1);
    CRCalFile& file = AddCalibration(objs)->rcal;
    SUserCal a, b;
    b.c[0] = 2.0e-3;
    a.Apply(file, 0, EMethod::lookup);
    a.Apply(file, 0, EMethod::coefficients);
    b.Apply(file, 1, EMethod::coefficients);

    CUserConverter user;
    bool presets[2] = {true, true};
    ASSERT_TRUE(user.Update(unitCounts, tempCelsius, objs, unitTemperatureUser, tempCelsius, presets, 2, 0));
    EXPECT_FALSE(user.allHaveLookup);
    EXPECT_TRUE(user.allHaveCoefficients);

    // Preset bytes are read by their low three bits, as the direct path's
    // kernels read them; so 9 is preset 1 and 255 preset 7, which is not
    // active and takes the first active preset's table.
    unsigned short frame[6] = {3000, 3000, 9000, 12000, 9000, 9000};
    unsigned char presetIndex[6] = {0, 1, 1, 0, 9, 255};
    const bool isB[6] = {false, true, true, false, true, false};
    float out[6];
    ASSERT_TRUE(user.BaseToOutput(STypedData(frame, dtUInt16), presetIndex, STypedData(out, dtFlt32), nullptr, 6));
    for (int i = 0; i < 6; ++i) {
        const SUserCal& cal = isB[i] ? b : a;
        ExpectClose(out[i], cal.Expected(frame[i], EMethod::coefficients, 1.0, 1.0, tempCelsius), "mixed", size_t(i));
    }
    // Types above 9 are refused before anything is written.
    out[0] = -5.0f;
    EXPECT_FALSE(user.BaseToOutput(STypedData(frame, dtRGB24), STypedData(out, dtFlt32), nullptr, 1));
    EXPECT_EQ(out[0], -5.0f);
}

TEST(UserConverter, SupportedUnitsNeedACalibrationWithCoefficients)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 4, 4);
    TArray<EUnit> units;
    EXPECT_FALSE(CUserConverter::SupportedUnits(units, unitCounts, objs));
    TSharedPtr<CRCalReduceObject> cal = AddCalibration(objs);
    EXPECT_FALSE(CUserConverter::SupportedUnits(units, unitCounts, objs)); // no coefficients yet
    SUserCal().Apply(cal->rcal, 0, EMethod::planck);
    cal->valid = false;
    EXPECT_FALSE(CUserConverter::SupportedUnits(units, unitCounts, objs));
    cal->valid = true;
    EXPECT_FALSE(CUserConverter::SupportedUnits(units, unitTemperatureUser, objs));
    EXPECT_TRUE(units.empty());
    ASSERT_TRUE(CUserConverter::SupportedUnits(units, unitCounts, objs));
    ASSERT_TRUE(CUserConverter::SupportedUnits(units, unitRadianceUser, objs));
    ASSERT_EQ(units.size(), 5u);
    const EUnit expected[] = {unitCounts, unitRadianceUser, unitTemperatureUser, unitRadianceUser,
                              unitTemperatureUser};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(units[i], expected[i]);
}
