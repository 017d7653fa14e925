#include "tools/orvreduce/Reducer.h"

#include <cstring>

#include "orv/PixelType.h"
#include "reduce/convert/Converter.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

bool CFrameReducer::Open(const std::string& path, EUnit unit, ETempType scale, double emissivity, double distance)
{
    m_path = path;
    if (!OpenRecording(m_reader, path)) return false;
    if (!m_reader.filter()) {
        Fail("%s: no filter reads pixel type %s", path.c_str(), GuidToString(m_reader.pixelType()).c_str());
        return false;
    }
    if (m_reader.numFrames() == 0) {
        Fail("%s: the recording holds no whole frame", path.c_str());
        return false;
    }
    PrintWarning(m_reader, path);
    m_unit = unit;
    m_scale = scale;
    m_rawType = PixelDataType(m_reader.pixelType());
    // Colour pixels come as RGB triples, which the RGB converter splits.
    const bool colour = m_rawType == dtRGB24 || m_rawType == dtRGB48;
    if (!colour && (DataTypeSize(m_rawType) == 0 || m_rawType > dtFlt64)) {
        Fail("%s: pixel type %s holds no single numeric value per pixel", path.c_str(),
             PixelTypeName(m_reader.pixelType()).c_str());
        return false;
    }
    m_raw.resize(m_reader.PixelBufferSize(m_rawType));

    CReduceObjectArray& objs = m_reader.reduceObjs();
    if (emissivity >= 0 || distance >= 0) {
        auto own = objs.GetObjectParameters(false);
        if (!own) {
            Fail("%s: the recording has no object parameters to change", path.c_str());
            return false;
        }
        CObjectParametersReduceObject saved;
        own->CopyTo(&m_wanted);
        if (emissivity >= 0) m_wanted.emissivity = static_cast<float>(emissivity);
        if (distance >= 0) m_wanted.distance = static_cast<float>(distance);
        // In the recording's objects for converters that read them at
        // Update, and through ChangeObjectParameters for those that can.
        CConvertContext::OverrideObjectParameters(objs, m_wanted, saved);
        m_changeParameters = true;
    }

    m_context.setReduceObjs(&objs);
    TArray<EUnit> units;
    m_context.GetUnits(units);
    bool offered = unit == m_reader.sourceInfo()->baseUnit;
    for (EUnit u : units) offered = offered || u == unit;
    if (!offered) {
        // The recording's own unit is offered too, without a converter.
        std::string list = UnitToString(m_reader.sourceInfo()->baseUnit);
        for (EUnit u : units) list += std::string(list.empty() ? "" : ", ") + UnitToString(u);
        Fail("%s: cannot be shown in \"%s\"; it offers: %s", path.c_str(), UnitToString(unit),
             list.c_str());
        return false;
    }
    if (!m_context.SetUnit(unit, scale)) {
        Fail("%s: no converter gives \"%s\"", path.c_str(), UnitToString(unit));
        return false;
    }
    return true;
}

bool CFrameReducer::Activate(uint8_t preset)
{
    if (m_activePreset == preset) return true;
    bool presets[8] = {};
    if (preset >= 8) return false;
    presets[preset] = true;
    if (!m_context.Update(presets, 8, 0)) return false;
    if (m_changeParameters && m_context.canChangeObjectParameters() && !m_context.ChangeObjectParameters(&m_wanted))
        return false;
    m_activePreset = preset;
    return true;
}

bool CFrameReducer::Decode(uint64_t index)
{
    uint8_t preset = 0;
    if (!m_reader.DecodeFrame(index, STypedData(m_raw.data(), m_rawType), m_raw.size(), preset)) {
        Fail("%s: frame %llu: %s", m_path.c_str(), static_cast<unsigned long long>(index),
             m_reader.lastError().c_str());
        return false;
    }
    if (!Activate(preset)) {
        Fail("%s: frame %llu: preset %u cannot be converted to \"%s\"", m_path.c_str(),
             static_cast<unsigned long long>(index), preset, UnitToString(m_unit));
        return false;
    }
    return true;
}

bool CFrameReducer::Reduce(uint64_t index, float* values, unsigned char* status)
{
    if (!Decode(index)) return false;
    const unsigned n = static_cast<unsigned>(pixels());
    std::memset(status, 0, n);
    if (!m_context.Convert(STypedData(m_raw.data(), m_rawType), STypedData(values, dtFlt32), status, n)) {
        Fail("%s: frame %llu: the conversion to \"%s\" failed", m_path.c_str(),
             static_cast<unsigned long long>(index), UnitToString(m_unit));
        return false;
    }
    return true;
}

} // namespace orv::reduce::cli
