#include "reduce/convert/UserConverter.h"

#include <algorithm>
#include <cstring>

#include "reduce/convert/RadianceKernels.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

bool BadTypes(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}

void ClearStatus(unsigned char* status, unsigned int n)
{
    if (status) std::memset(status, 0, n);
}

TSharedPtr<CRCalReduceObject> FindCalibration(CReduceObjectArray& objs)
{
    return objs.GetObjectOfType(CRCalReduceObject::classTypeID(), -1, false).DynamicCast<CRCalReduceObject>();
}

} // namespace

// The direct path of the per-pixel preset and region forms, by units:
// radiance in gives temperature, counts give temperature or radiance.
#define ORV_USER_DIRECT(RADIANCE, TEMPERATURE, ...)                                                       \
    (baseUnit == unitRadianceUser                                                                         \
         ? RadianceToTemperature(src, dst, __VA_ARGS__, TEMPERATURE, commonParams)                        \
         : outputUnit == unitTemperatureUser                                                              \
               ? CountsToTemperature(src, dst, __VA_ARGS__, RADIANCE, TEMPERATURE, commonParams)          \
               : CountsToRadiance(src, dst, __VA_ARGS__, RADIANCE, commonParams))

bool CUserConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts && base != unitRadianceUser) return false;
    if (!objs.HasObjectOfType(CRCalReduceObject::typeID, true)) return false;
    TSharedPtr<CRCalReduceObject> cal = FindCalibration(objs);
    if (!cal || !cal->rcal.HasCoefficients()) return false;
    if (base == unitCounts) units.add(unitCounts);
    units.add(unitRadianceUser);
    units.add(unitTemperatureUser);
    return true;
}

CUserConverter::CUserConverter() = default;

CUserConverter::~CUserConverter() = default;

bool CUserConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                            bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!IConverter::Update(base, baseTemp, objs, out, outTemp, presets, numPresets, reserved)) return false;
    rcal = FindCalibration(objs);
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!rcal) return false;
    const unsigned int width = info ? info->imageWidth : 0;
    const unsigned int height = info ? info->imageHeight : 0;
    const CRCalFile& cal = rcal->rcal;

    usesBackgroundImage = false;
    allHaveLookup = true;
    allHaveCoefficients = true;
    for (int i = 0; i < 8; ++i) {
        if (!presetActive[i]) {
            // Records of presets no longer active point nowhere, so that no
            // kernel meets an image of an earlier calibration.
            radianceParams[i] = SRadianceParams{};
            temperatureParams[i] = STemperatureParams{};
            continue;
        }
        // The calibration's answers are taken as they come: a missing part
        // reads as empty or zero.
        cal.GetPolyOrder(i, polyOrder[i]);
        cal.GetCoefficients(i, coefficients[i]);
        cal.GetTempPolyOrder(i, tempOrder[i]);
        cal.GetTempCoefficients(i, tempCoefficients[i]);
        cal.GetLookup(i, lookupRadiance[i], lookupTemperature[i]);
        CRCalFile::BACKGROUND_TYPE type = CRCalFile::BACKGROUND_NONE;
        cal.GetBackgroundType(i, type);
        if (type == CRCalFile::BACKGROUND_VALUE) {
            cal.GetBackgroundValue(i, background[i]);
        } else if (type == CRCalFile::BACKGROUND_FILE) {
            // The image is indexed by frame position: one that is not the
            // frame cannot serve, and a zero stand-by sized from a damaged
            // image claim would be backed by nothing. The preset is unusable.
            // A source info without a frame size leaves the image standing for it.
            if (info && (info->frameWidth || info->frameHeight) &&
                (width != info->frameWidth || height != info->frameHeight))
                return false;
            unsigned int crc = 0;
            bool loaded = false;
            if (cal.GetBackgroundFileCRC(i, width, height, crc)) {
                if (hasBackgroundFile[i] && backgroundCRC[i] == crc) {
                    loaded = true; // the image in hand is this one
                } else if (cal.GetBackgroundFile(i, width, height, backgroundImage[i])) {
                    hasBackgroundFile[i] = true;
                    backgroundCRC[i] = crc;
                    backgroundZero[i] = false;
                    loaded = true;
                }
            }
            // A background that cannot be had counts as zero, without a
            // word: conversion goes on. A zero image made for another frame
            // size is made again.
            if (!loaded && (!backgroundZero[i] || backgroundImage[i].size() != size_t(width) * height)) {
                backgroundImage[i].clear();
                backgroundImage[i].resize(size_t(width) * height);
                hasBackgroundFile[i] = false;
                backgroundCRC[i] = 0;
                backgroundZero[i] = true;
            }
            usesBackgroundImage = true;
        } else {
            background[i] = 0;
        }
        cal.GetBandpass(bandpassStart, bandpassEnd);
        if (lookupRadiance[i].empty()) allHaveLookup = false;
        if (tempOrder[i] == 0) allHaveCoefficients = false;

        SRadianceParams& r = radianceParams[i];
        r.coefficients = coefficients[i].data();
        r.order = polyOrder[i];
        r.background = background[i];
        r.backgroundImage = type == CRCalFile::BACKGROUND_FILE ? backgroundImage[i].data() : nullptr;
        STemperatureParams& t = temperatureParams[i];
        t.lookupRadiance = lookupRadiance[i].data();
        t.lookupTemperature = lookupTemperature[i].data();
        t.lookupSize = int(std::min(lookupRadiance[i].size(), lookupTemperature[i].size()));
        t.tempCoefficients = tempCoefficients[i].data();
        t.tempOrder = tempOrder[i];
    }

    invTransmission = 1.0;
    emissivity = 1.0;
    if (TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(false)) {
        const float t = params->estAtmosphericTransmission;
        if (t != 0.0f) {
            invTransmission = 1.0 / t;
            params->atmosphericTransmission = t;
        } else {
            params->atmosphericTransmission = 1.0f;
        }
        emissivity = params->emissivity;
    }
    commonParams.scale = invTransmission;
    commonParams.emissivity = emissivity;
    commonParams.tempType = outputTempType;
    commonParams.bandpassEnd = bandpassEnd;
    commonParams.bandpassStart = bandpassStart;
    // The tables are deliberately kept: only ChangeObjectParameters and
    // construction invalidate them.
    return true;
}

bool CUserConverter::ChangeObjectParameters(CObjectParametersReduceObject* p)
{
    if (!p) return false;
    const float t = p->estAtmosphericTransmission;
    if (t == 0.0f) {
        invTransmission = 1.0;
        p->atmosphericTransmission = 1.0f;
    } else {
        invTransmission = 1.0 / t;
        p->atmosphericTransmission = t;
    }
    // Distance and the path temperatures play no part in a user calibration.
    emissivity = p->emissivity;
    commonParams.scale = invTransmission;
    commonParams.emissivity = emissivity;
    for (bool& valid : lutValid) valid = false;
    return true;
}

bool CUserConverter::OutputToSignal(float, unsigned short&, unsigned char&, unsigned char preset)
{
    const unsigned p = preset == 255 ? firstActivePreset : preset;
    return p < 8 && presetActive[p];
}

bool CUserConverter::BackgroundCovers(size_t end) const
{
    if (!usesBackgroundImage || baseUnit != unitCounts) return true;
    for (int i = 0; i < 8; ++i)
        if (presetActive[i] && radianceParams[i].backgroundImage && backgroundImage[i].size() < end) return false;
    return true;
}

bool CUserConverter::TemperatureStep(STypedData dst, STypedData src, unsigned int n, unsigned char p)
{
    if (allHaveLookup)
        return ToTemperatureLookup(dst, src, n, lookupRadiance[p].data(), lookupTemperature[p].data(),
                                   temperatureParams[p].lookupSize, true, emissivity, outputTempType);
    if (allHaveCoefficients)
        return ToTemperatureCoeffs(dst, src, n, tempCoefficients[p].data(), tempOrder[p], emissivity,
                                   outputTempType);
    return ToTemperaturePlanck(dst, src, n, bandpassEnd, bandpassStart, emissivity, outputTempType);
}

bool CUserConverter::TemperatureStep(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n,
                                     unsigned char p)
{
    if (allHaveLookup)
        return ToTemperatureLookup(dst, src, indices, n, lookupRadiance[p].data(), lookupTemperature[p].data(),
                                   temperatureParams[p].lookupSize, true, emissivity, outputTempType);
    if (allHaveCoefficients)
        return ToTemperatureCoeffs(dst, src, indices, n, tempCoefficients[p].data(), tempOrder[p], emissivity,
                                   outputTempType);
    return ToTemperaturePlanck(dst, src, indices, n, bandpassEnd, bandpassStart, emissivity, outputTempType);
}

bool CUserConverter::Radiance(STypedData dst, STypedData src, unsigned int n, unsigned char p)
{
    // The preset's own image, set by the last Update only when its
    // calibration has one: an image left from an earlier one is not used.
    if (double* image = radianceParams[p].backgroundImage)
        return ToRadiance(dst, src, n, coefficients[p].data(), polyOrder[p], image, invTransmission);
    return ToRadiance(dst, src, n, coefficients[p].data(), polyOrder[p], background[p], invTransmission);
}

bool CUserConverter::Radiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n,
                              unsigned char p)
{
    if (double* image = radianceParams[p].backgroundImage)
        return ToRadiance(dst, src, indices, n, coefficients[p].data(), polyOrder[p], image, invTransmission);
    return ToRadiance(dst, src, indices, n, coefficients[p].data(), polyOrder[p], background[p], invTransmission);
}

bool CUserConverter::UpdateLUT(unsigned char preset)
{
    return BuildTable(preset, [&](float* table, unsigned char* status) {
        CountsToRadiance(0, 65535, table, status, false, 0, 0, 0, 0, coefficients[preset].data(),
                         polyOrder[preset], background[preset], invTransmission);
        // The temperature step's answer is not asked: the table stands as
        // it comes out.
        if (outputUnit == unitTemperatureUser) {
            STypedData values(table, dtFlt32);
            TemperatureStep(values, values, kLUTSize, preset);
        }
        return true;
    });
}

bool CUserConverter::SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                                    unsigned char preset)
{
    const unsigned p = preset == 255 ? firstActivePreset : preset;
    if (p > 7 || !presetActive[p]) return false;
    // A range of counts has no pixel position for a per-pixel background.
    if (polyOrder[p] < 0 && usesBackgroundImage) return false;
    CountsToRadiance(first, last, out, status, false, 0, 0, 0, 0, coefficients[p].data(), polyOrder[p],
                     background[p], invTransmission);
    if (outputUnit == unitTemperatureUser && last >= first) {
        STypedData values(out, dtFlt32);
        TemperatureStep(values, values, unsigned(last) - first + 1u, static_cast<unsigned char>(p));
    }
    return true;
}

bool CUserConverter::ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status)
{
    if (UseLUT()) return CPresetTableConverter::ConvertRegion(src, region, dst, status);
    if (BadTypes(src, dst)) return false;
    const unsigned char p = firstActivePreset;
    if (!BackgroundCovers(usesBackgroundImage ? region.End() : 0)) return false;
    const unsigned int n = region.PixelCount();
    ClearStatus(status, n);
    switch (region.kind) {
    case SPixelRegion::kindFrame:
        if (baseUnit == unitRadianceUser) return TemperatureStep(dst, src, n, p);
        if (!Radiance(dst, src, n, p)) return false;
        break;
    case SPixelRegion::kindIndices:
        if (baseUnit == unitRadianceUser) return TemperatureStep(dst, src, region.indices, n, p);
        if (!Radiance(dst, src, region.indices, n, p)) return false;
        break;
    default:
        // The region kernels take the frame's geometry; the frame and index
        // forms above never come here.
        return region.Forward([&](auto... a) -> bool {
            if constexpr (sizeof...(a) >= 3)
                return ORV_USER_DIRECT(radianceParams[p], temperatureParams[p], a...);
            else
                return false;
        });
    }
    // The radiance lies dense in dst now.
    if (outputUnit == unitTemperatureUser) return TemperatureStep(dst, dst, n, p);
    return true;
}

bool CUserConverter::ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region,
                                   STypedData dst, unsigned char* status)
{
    if (UseLUT()) return CPresetTableConverter::ConvertRegion(src, presetIndex, region, dst, status);
    if (BadTypes(src, dst)) return false;
    if (!BackgroundCovers(usesBackgroundImage ? region.End() : 0)) return false;
    ClearStatus(status, region.PixelCount());
    return region.Forward([&](auto... a) -> bool {
        return ORV_USER_DIRECT(radianceParams, temperatureParams, presetIndex, a..., presetActive);
    });
}

#undef ORV_USER_DIRECT

} // namespace orv::reduce
