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

} // namespace

// A whole frame, a rectangle, scan lines, a mask and an index list, in Celsius
// and Kelvin, by each temperature method, against the formulas; then with a
// new emissivity.
TEST(UserConverter, EndToEndTemperatureThroughTheContext)
{
    for (EMethod method : kMethods) {
        for (ETempType scale : {tempCelsius, tempKelvin}) {
            SRecording rec(method);
            CConvertContext ctx;
            ctx.setReduceObjs(&rec.objs);
            ASSERT_TRUE(ctx.SetUnit(ParseUnit("Temperature (User)"), scale));
            ASSERT_EQ(ctx.converter()->name(), CString("UserConverter"));
            bool presets[1] = {true};
            ASSERT_TRUE(ctx.Update(presets, 1, 0));
            ASSERT_TRUE(ctx.converter()->canUseLUT());

            double emissivity = 0.95f, scaleFactor = 1.0 / double(0.8f);
            auto expected = [&](size_t flat) {
                return rec.cal.Expected(rec.frame[flat], method, emissivity, scaleFactor, scale);
            };

            std::vector<float> out(rec.frame.size(), -1.0f);
            std::vector<unsigned char> status(rec.frame.size(), 9);
            ASSERT_TRUE(ctx.Convert(rec.src(), STypedData(out.data(), dtFlt32), status.data(), unsigned(out.size())));
            for (size_t i = 0; i < out.size(); ++i) {
                ExpectClose(out[i], expected(i), "frame", i);
                EXPECT_EQ(status[i], 0);
            }

            const SArea area{3, 5, 7, 12}; // rows 3..7, columns 5..12
            std::vector<size_t> rectFlat;
            for (unsigned y = 3; y <= 7; ++y)
                for (unsigned x = 5; x <= 12; ++x) rectFlat.push_back(y * kW + x);
            std::vector<float> part(rectFlat.size());
            ASSERT_TRUE(ctx.Convert(rec.src(), kW, kH, area, STypedData(part.data(), dtFlt32), nullptr));
            for (size_t i = 0; i < part.size(); ++i) ExpectClose(part[i], expected(rectFlat[i]), "rect", i);

            TArray<SScanLine> lines{{9, 30, 33}, {2, 0, 1}, {9, 4, 4}};
            const size_t lineFlat[] = {9 * kW + 30, 9 * kW + 31, 9 * kW + 32, 9 * kW + 33, 2 * kW, 2 * kW + 1, 9 * kW + 4};
            part.assign(7, 0.0f);
            ASSERT_TRUE(ctx.Convert(rec.src(), kW, kH, lines, STypedData(part.data(), dtFlt32), nullptr));
            for (size_t i = 0; i < 7; ++i) ExpectClose(part[i], expected(lineFlat[i]), "lines", i);

            // A mask of its own stride, a diagonal band.
            const unsigned stride = 50;
            std::vector<unsigned char> mask(stride * kH, 0);
            std::vector<size_t> maskFlat;
            for (unsigned y = 10; y <= 20; ++y)
                for (unsigned x = 10; x <= 25; ++x)
                    if ((x + y) % 3 == 0) {
                        mask[y * stride + x] = 1;
                        maskFlat.push_back(y * kW + x);
                    }
            part.assign(maskFlat.size(), 0.0f);
            ASSERT_TRUE(ctx.Convert(rec.src(), kW, kH, SArea{10, 10, 20, 25}, mask.data(), stride,
                                    STypedData(part.data(), dtFlt32), nullptr));
            for (size_t i = 0; i < part.size(); ++i) ExpectClose(part[i], expected(maskFlat[i]), "mask", i);

            const unsigned indices[] = {1199, 0, 640, 640, 17};
            part.assign(5, 0.0f);
            ASSERT_TRUE(ctx.Convert(rec.src(), indices, 5, STypedData(part.data(), dtFlt32), nullptr));
            for (size_t i = 0; i < 5; ++i) ExpectClose(part[i], expected(indices[i]), "indices", i);

            // New emissivity: the tables are rebuilt without an Update.
            CObjectParametersReduceObject changed;
            changed.emissivity = 0.8f;
            changed.estAtmosphericTransmission = 0.8f;
            ASSERT_TRUE(ctx.ChangeObjectParameters(&changed));
            emissivity = 0.8f;
            ASSERT_TRUE(ctx.Convert(rec.src(), STypedData(out.data(), dtFlt32), nullptr, unsigned(out.size())));
            for (size_t i = 0; i < out.size(); ++i) ExpectClose(out[i], expected(i), "new emissivity", i);
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

    unsigned short frame[4] = {3000, 3000, 9000, 12000};
    unsigned char presetIndex[4] = {0, 1, 1, 0};
    float out[4];
    ASSERT_TRUE(user.BaseToOutput(STypedData(frame, dtUInt16), presetIndex, STypedData(out, dtFlt32), nullptr, 4));
    for (int i = 0; i < 4; ++i) {
        const SUserCal& cal = presetIndex[i] ? b : a;
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
