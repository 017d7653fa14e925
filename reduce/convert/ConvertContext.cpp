#include "reduce/convert/ConvertContext.h"

#include <cstring>

#include "orv/ConvertArray.h"
#include "reduce/convert/ConverterFactory.h"
#include "reduce/kernels/Abate.h"
#include "reduce/kernels/ImageDataKernels.h"
#include "reduce/kernels/NUC.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

bool BadPair(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}

size_t PairIndex(STypedData src, STypedData dst) { return size_t(src.type) * 10 + size_t(dst.type); }

// The parameter group that an override replaces; the computed
// atmosphericTransmission is not part of it.
void CopyParameterGroup(const CObjectParametersReduceObject& from, CObjectParametersReduceObject& to)
{
    to.emissivity = from.emissivity;
    to.distance = from.distance;
    to.reflectedTemp = from.reflectedTemp;
    to.atmosphereTemp = from.atmosphereTemp;
    to.extOpticsTemp = from.extOpticsTemp;
    to.extOpticsTransmission = from.extOpticsTransmission;
    to.estAtmosphericTransmission = from.estAtmosphericTransmission;
    to.relativeHumidity = from.relativeHumidity;
}

// The kernels trust the correction tables: they must cover the n pixels, and
// with bad pixels replaced describe exactly this frame, since a replacement
// may name any pixel of the table and is read from the frame.
bool TablesFit(const CCorrectionReduceObject& c, bool replaces, unsigned int n)
{
    return replaces ? c.pixelCount() == n : c.pixelCount() >= n;
}

TSharedPtr<CObjectParametersReduceObject> ParametersOf(CReduceObjectArray& objs)
{
    return objs.GetObjectOfType(CObjectParametersReduceObject::typeID, -1, true)
        .DynamicCast<CObjectParametersReduceObject>();
}

} // namespace

CConvertContext::~CConvertContext() = default;

bool CConvertContext::GetUnits(TArray<EUnit>& units)
{
    if (!m_reduceObjs) return false;
    return converterFactory()->GetSupportedUnits(units, *m_reduceObjs);
}

bool CConvertContext::SetUnit(EUnit unit, ETempType tempType)
{
    if (!m_reduceObjs) return false;
    TSharedPtr<CSourceInfoReduceObject> info = m_reduceObjs->GetSourceInfo(false);
    if (!info) return false;
    const EUnit base = info->baseUnit;
    if (unit == base && (!IsTemperatureUnit(base) || tempType == info->baseTempType)) {
        // What the recording already holds needs no converter.
        m_converter = nullptr;
        m_unit = unit;
        m_tempType = tempType;
        return true;
    }
    m_converter = nullptr;
    m_converter = converterFactory()->ConverterForUnit(*m_reduceObjs, unit);
    // On failure the context is left without a converter and with its old
    // unit: intended, the caller has to respect the false.
    if (!m_converter) return false;
    m_unit = unit;
    m_tempType = tempType;
    return true;
}

bool CConvertContext::Update(bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!m_reduceObjs || numPresets > 8 || (numPresets && !presets)) return false;
    TSharedPtr<CSourceInfoReduceObject> info = m_reduceObjs->GetSourceInfo(false);
    if (!info) return false;

    // Flags beyond numPresets keep their earlier values, and preset 1 is
    // switched off whenever numPresets is not 8, even if just set: both
    // intended, callers depend on them.
    for (unsigned i = 0; i < numPresets; ++i) m_presetActive[i] = presets[i];
    if (numPresets != 8) m_presetActive[1] = false;
    m_numPresets = numPresets;

    m_abateCfg = m_reduceObjs->GetObjectOfType(CAbateCfgReduceObject::typeID, -1, true)
                     .DynamicCast<CAbateCfgReduceObject>();
    m_correctionCfg = m_reduceObjs->GetObjectOfType(CCorrectionCfgReduceObject::classTypeID(), -1, true)
                          .DynamicCast<CCorrectionCfgReduceObject>();
    for (int i = 0; i < 8; ++i)
        m_corrections[i] = m_reduceObjs->GetObjectOfType(CCorrectionReduceObject::classTypeID(), i, false)
                               .DynamicCast<CCorrectionReduceObject>();

    int first = -1;
    for (int i = 0; i < 8 && first < 0; ++i)
        if (m_presetActive[i]) first = i;
    if (first < 0) {
        m_firstActivePreset = 0;
        return false;
    }
    m_firstActivePreset = static_cast<unsigned char>(first);

    if (!m_converter) return true;
    return m_converter->Update(info->baseUnit, info->baseTempType, *m_reduceObjs, m_unit, m_tempType,
                               m_presetActive, m_numPresets, reserved);
}

bool CConvertContext::needToApplyNUC() const
{
    if (!m_correctionCfg) return false;
    if (!m_correctionCfg->applyGainOffset && !m_correctionCfg->applyBadPixels) return false;
    for (int i = 0; i < 8; ++i)
        if (m_presetActive[i] && m_corrections[i]) return true;
    return false;
}

bool CConvertContext::ApplyNUC(STypedData src, STypedData dst, unsigned int n, STypedData& result)
{
    if (!m_correctionCfg) return false;
    // The correction always uses the data of the first active preset.
    CCorrectionReduceObject* c = m_corrections[m_firstActivePreset & 7].get();
    const CCorrectionCfgReduceObject& cfg = *m_correctionCfg;
    float* gains = nullptr;
    short* offsets = nullptr;
    unsigned int* map = nullptr;
    if (cfg.applyGainOffset) {
        if (!c) {
            result = src;
            return true;
        }
        gains = c->gains;
        offsets = c->offsets;
        if (cfg.applyBadPixels) map = c->replacements;
    } else {
        if (!cfg.applyBadPixels || !c) {
            result = src;
            return true;
        }
        map = c->replacements;
    }
    if (!TablesFit(*c, map != nullptr, n)) return false;
    orv::reduce::ApplyNUC(dst, src, n, gains, offsets, map, cfg.clip, cfg.lowLimit, cfg.highLimit);
    result = dst;
    return true;
}

bool CConvertContext::ApplyNUC(STypedData src, STypedData dst, unsigned int n)
{
    STypedData result;
    if (!ApplyNUC(src, dst, n, result)) return false;
    if (result.data == src.data && result.type == src.type && src.data != dst.data) ConvertArray(dst, src, n);
    return true;
}

bool CConvertContext::Abate(const STypedData* frames, unsigned int n, STypedData dst, unsigned char* status)
{
    if (!frames) return false;
    for (unsigned i = 0; i < m_numPresets; ++i)
        if (m_presetActive[i] && (frames[i].type != dst.type || !frames[i].data)) return false;
    if (!m_abateCfg || !m_correctionCfg) return false;
    const CCorrectionCfgReduceObject& cfg = *m_correctionCfg;

    float* gains[8] = {};
    short* offsets[8] = {};
    unsigned int* maps[8] = {};
    for (int i = 0; i < 8; ++i) {
        const CCorrectionReduceObject* c = m_corrections[i].get();
        if (!c) continue;
        if ((cfg.applyGainOffset || cfg.applyBadPixels) && !TablesFit(*c, cfg.applyBadPixels && c->replacements, n))
            return false;
        if (cfg.applyGainOffset) {
            gains[i] = c->gains;
            offsets[i] = c->offsets;
        }
        if (cfg.applyBadPixels) maps[i] = c->replacements;
    }
    void* framePointers[8] = {};
    for (unsigned i = 0; i < m_numPresets; ++i) framePointers[i] = frames[i].data;

    if (dst.type != dtUInt16 && dst.type != dtFlt32) return false;
    CAbateCfgReduceObject& abate = *m_abateCfg;
    return orv::reduce::Abate(dst.type, framePointers, n, dst.data, status, m_presetActive, abate.order,
                              abate.lowLimits, abate.highLimits, int(abate.mode), gains, offsets, maps, cfg.clip,
                              cfg.lowLimit, cfg.highLimit);
}

// ---- pixel conversion -----------------------------------------------------

bool CConvertContext::Convert(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    if (m_converter) return m_converter->BaseToOutput(src, dst, status, n);
    if (!ConvertArray(dst, src, n)) return false;
    if (status) std::memset(status, 0, n);
    return true;
}

bool CConvertContext::Convert(STypedData src, const unsigned char* presetIndex, STypedData dst,
                              unsigned char* status, unsigned int n)
{
    if (m_converter) return m_converter->BaseToOutput(src, presetIndex, dst, status, n);
    return Convert(src, dst, status, n);
}

bool CConvertContext::Convert(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                              unsigned char* status)
{
    if (m_converter) return m_converter->BaseToOutput(src, indices, n, dst, status);
    if (BadPair(src, dst)) return false;
    priv::vecConvertSubArray[PairIndex(src, dst)](src.data, dst.data, status, indices, n);
    if (status) std::memset(status, 0, n);
    return true;
}

bool CConvertContext::Convert(STypedData src, const unsigned char* presetIndex, const unsigned int* indices,
                              unsigned int n, STypedData dst, unsigned char* status)
{
    if (m_converter) return m_converter->BaseToOutput(src, presetIndex, indices, n, dst, status);
    return Convert(src, indices, n, dst, status);
}

// In the region rows without a converter the gathering kernels clear the
// status element by element. A region reaching outside the frame is refused
// before anything is written: the kernels trust their regions.
bool CConvertContext::Convert(STypedData src, unsigned short width, unsigned short height, SArea area,
                              STypedData dst, unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, area)) return false;
    if (m_converter) return m_converter->BaseToOutput(src, width, height, area, dst, status);
    if (BadPair(src, dst)) return false;
    priv::vecConvertSubArrayRect[PairIndex(src, dst)](src.data, dst.data, status, width, height, area);
    return true;
}

bool CConvertContext::Convert(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, STypedData dst, unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, area)) return false;
    if (m_converter) return m_converter->BaseToOutput(src, presetIndex, width, height, area, dst, status);
    return Convert(src, width, height, area, dst, status);
}

bool CConvertContext::Convert(STypedData src, unsigned short width, unsigned short height,
                              const TArray<SScanLine>& lines, STypedData dst, unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, lines)) return false;
    if (m_converter) return m_converter->BaseToOutput(src, width, height, lines, dst, status);
    if (BadPair(src, dst)) return false;
    priv::vecConvertSubArrayScanLines[PairIndex(src, dst)](src.data, dst.data, status, width, height, lines);
    return true;
}

bool CConvertContext::Convert(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, const TArray<SScanLine>& lines, STypedData dst,
                              unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, lines)) return false;
    if (m_converter) return m_converter->BaseToOutput(src, presetIndex, width, height, lines, dst, status);
    return Convert(src, width, height, lines, dst, status);
}

bool CConvertContext::Convert(STypedData src, unsigned short width, unsigned short height, SArea area,
                              const unsigned char* mask, unsigned int maskWidth, STypedData dst,
                              unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, area)) return false;
    if (m_converter) return m_converter->BaseToOutput(src, width, height, area, mask, maskWidth, dst, status);
    if (BadPair(src, dst)) return false;
    priv::vecConvertSubArrayMask[PairIndex(src, dst)](src.data, dst.data, status, width, height, area, mask,
                                                      maskWidth);
    return true;
}

bool CConvertContext::Convert(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                              STypedData dst, unsigned char* status)
{
    if (!priv::RegionInFrame(width, height, area)) return false;
    if (m_converter)
        return m_converter->BaseToOutput(src, presetIndex, width, height, area, mask, maskWidth, dst, status);
    return Convert(src, width, height, area, mask, maskWidth, dst, status);
}

// ---- single values and converter queries ----------------------------------

bool CConvertContext::Convert(float in, float& out, unsigned char& status, unsigned char preset)
{
    if (m_converter) return m_converter->BaseToOutput(in, out, status, preset);
    out = in;
    status = 0;
    return true;
}

bool CConvertContext::ConvertBack(float in, float& out, unsigned char& status, unsigned char preset)
{
    if (m_converter) return m_converter->OutputToBase(in, out, status, preset);
    out = in;
    status = 0;
    return true;
}

bool CConvertContext::canChangeObjectParameters()
{
    return m_converter ? m_converter->canChangeObjectParameters() : false;
}

bool CConvertContext::ChangeObjectParameters(CObjectParametersReduceObject* params)
{
    return m_converter ? m_converter->ChangeObjectParameters(params) : false;
}

bool CConvertContext::isReversable() { return m_converter ? m_converter->isReversable() : true; }

unsigned char CConvertContext::GuessPresetFromOutput(float value)
{
    return m_converter ? m_converter->GuessPresetFromOutput(value) : m_firstActivePreset;
}

bool CConvertContext::OverrideObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& params,
                                               CObjectParametersReduceObject& saved)
{
    TSharedPtr<CObjectParametersReduceObject> obj = ParametersOf(objs);
    if (!obj) return false;
    // Only the recording's own parameters are saved, so a second override in
    // a row keeps what the first one saved.
    if (obj->source) {
        saved.source = true;
        CopyParameterGroup(*obj, saved);
    }
    obj->source = false;
    CopyParameterGroup(params, *obj);
    return true;
}

bool CConvertContext::RestoreObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& saved)
{
    TSharedPtr<CObjectParametersReduceObject> obj = ParametersOf(objs);
    if (!obj) return false;
    if (!saved.source || obj->source) return false;
    obj->source = true;
    CopyParameterGroup(saved, *obj);
    return true;
}

} // namespace orv::reduce
