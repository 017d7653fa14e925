#include "reduce/store/RecordingReduction.h"

#include <cmath>
#include <cstdarg>
#include <cstring>

#include "orv/PixelType.h"
#include "reduce/convert/Converter.h"
#include "reduce/objects/SourceInfoReduceObject.h"

namespace orv::reduce {

namespace {

constexpr uint64_t kNoFrame = ~uint64_t(0);

} // namespace

bool CRecordingReduction::Fail(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_error = CString::FromFormatV(format, args);
    va_end(args);
    return false;
}

void CRecordingReduction::Close()
{
    m_context = std::make_unique<CConvertContext>();
    m_reader.Close();
    m_units.clear();
    m_path = CString();
    m_unit = unitCounts;
    m_scale = tempCelsius;
    m_emissivity = m_distance = -1;
    m_saved = CObjectParametersReduceObject();
    m_activePreset = -1;
    m_raw.Destroy();
    m_preset = 0;
    m_decoded = kNoFrame;
    m_error = CString();
}

bool CRecordingReduction::Open(const CString& path)
{
    Close();
    if (!m_reader.Open(path)) return Fail("%s", m_reader.lastError().c_str());
    m_path = path;
    return Prepare();
}

bool CRecordingReduction::Open(TSharedPtr<IFile> file)
{
    Close();
    if (!m_reader.Open(file)) return Fail("%s", m_reader.lastError().c_str());
    return Prepare();
}

bool CRecordingReduction::Prepare()
{
    TSharedPtr<CSourceInfoReduceObject> info = m_reader.sourceInfo();
    bool ok = false;
    if (!info)
        Fail("the recording has no source info block");
    else if (!m_reader.filter())
        Fail("no filter reads pixel type %s", GuidToString(m_reader.pixelType()).c_str());
    else if (m_reader.numFrames() == 0)
        Fail("the recording holds no whole frame: a frame takes %u bytes, %llu follow the header",
             m_reader.frameSize(), static_cast<unsigned long long>(m_reader.trailingBytes()));
    else if (pixels() == 0)
        Fail("the frame size is %ux%u", width(), height());
    // Colour pixels come as RGB triples, which the RGB converter splits.
    else if (m_rawType = PixelDataType(m_reader.pixelType()); DataTypeSize(m_rawType) == 0 || m_rawType > dtRGB48)
        Fail("pixel type %s holds no numeric value per pixel", PixelTypeName(m_reader.pixelType()).c_str());
    else
        ok = true;
    if (!ok) {
        // Let go before Close empties the array, so that the array's pointer
        // to the base type, not this one, releases the object.
        info.reset();
        const CString why = m_error;
        Close();
        m_error = why;
        return false;
    }
    m_raw.resize(m_reader.PixelBufferSize(m_rawType));
    m_context->setReduceObjs(&m_reader.reduceObjs());
    m_units.add(info->baseUnit);
    TArray<EUnit> offered;
    m_context->GetUnits(offered);
    for (EUnit u : offered)
        if (!offersUnit(u)) m_units.add(u);
    m_unit = info->baseUnit;
    m_scale = info->baseTempType;
    m_context->SetUnit(m_unit, m_scale);
    return true;
}

bool CRecordingReduction::offersUnit(EUnit unit) const
{
    for (EUnit u : m_units)
        if (u == unit) return true;
    return false;
}

bool CRecordingReduction::SetUnit(EUnit unit, ETempType scale)
{
    m_error = CString();
    if (!isOpen()) return Fail("no recording is open");
    if (!offersUnit(unit)) {
        CString list;
        for (size_t i = 0; i < m_units.size(); ++i)
            list = CString::FromFormat("%s%s%s", list.c_str(), i ? ", " : "", UnitToString(m_units[i]));
        return Fail("cannot be shown in \"%s\"; it offers: %s", UnitToString(unit), list.c_str());
    }
    if (scale < tempCelsius || scale > tempRankine) return Fail("unknown temperature scale %d", int(scale));
    if (!m_context->SetUnit(unit, scale)) {
        // The context keeps no converter now; put the previous one back.
        m_context->SetUnit(m_unit, m_scale);
        m_activePreset = -1;
        return Fail("no converter gives \"%s\"", UnitToString(unit));
    }
    m_unit = unit;
    m_scale = scale;
    m_activePreset = -1;
    return true;
}

bool CRecordingReduction::SetObjectParameters(double emissivity, double distance)
{
    m_error = CString();
    if (!isOpen()) return Fail("no recording is open");
    if (std::isnan(emissivity) || (emissivity >= 0 && (emissivity == 0 || emissivity > 1)))
        return Fail("the emissivity must lie in (0, 1], not %g", emissivity);
    if (std::isnan(distance) || std::isinf(distance))
        return Fail("the object distance must be a finite number of metres, not %g", distance);
    CReduceObjectArray& objs = m_reader.reduceObjs();
    auto own = objs.GetObjectParameters(false);
    if (emissivity < 0 && distance < 0) {
        if (m_emissivity >= 0 || m_distance >= 0) CConvertContext::RestoreObjectParameters(objs, m_saved);
    } else {
        if (!own) return Fail("the recording has no object parameters to change");
        // Each override starts from the recording's own values.
        if (m_emissivity >= 0 || m_distance >= 0) CConvertContext::RestoreObjectParameters(objs, m_saved);
        CObjectParametersReduceObject wanted;
        own->CopyTo(&wanted);
        if (emissivity >= 0) wanted.emissivity = static_cast<float>(emissivity);
        if (distance >= 0) wanted.distance = static_cast<float>(distance);
        CConvertContext::OverrideObjectParameters(objs, wanted, m_saved);
    }
    m_emissivity = emissivity < 0 ? -1 : emissivity;
    m_distance = distance < 0 ? -1 : distance;
    // Converters keep their tables across Update; only ChangeObjectParameters
    // (or a new converter) builds them again for the new parameters.
    auto now = objs.GetObjectParameters(false);
    if (!now || !m_context->canChangeObjectParameters() || !m_context->ChangeObjectParameters(now.get()))
        m_context->SetUnit(m_unit, m_scale);
    m_activePreset = -1;
    return true;
}

std::unique_ptr<CRecordingReduction> CRecordingReduction::Clone() const
{
    auto twin = std::make_unique<CRecordingReduction>();
    if (!twin->OpenClone(*this)) return nullptr;
    return twin;
}

bool CRecordingReduction::OpenClone(const CRecordingReduction& source)
{
    if (&source == this) return Fail("a reduction cannot be a clone of itself");
    if (!source.isOpen()) {
        Close();
        return Fail("the source reduction has no recording open");
    }
    if (source.m_path.empty()) {
        Close();
        return Fail("the source reduction was opened from an open file, which cannot be opened twice");
    }
    if (!Open(source.m_path)) return false;
    if (!SetUnit(source.m_unit, source.m_scale)) return false;
    return SetObjectParameters(source.m_emissivity, source.m_distance);
}

bool CRecordingReduction::Activate(uint8_t preset)
{
    if (m_activePreset == preset) return true;
    bool presets[8] = {};
    if (preset >= 8) return false;
    presets[preset] = true;
    if (!m_context->Update(presets, 8, 0)) return false;
    m_activePreset = preset;
    return true;
}

bool CRecordingReduction::Decode(uint64_t index)
{
    m_error = CString();
    if (!isOpen()) return Fail("no recording is open");
    m_decoded = kNoFrame;
    uint8_t preset = 0;
    if (!m_reader.DecodeFrame(index, raw(), m_raw.size(), preset))
        return Fail("frame %llu: %s", static_cast<unsigned long long>(index), m_reader.lastError().c_str());
    m_preset = preset;
    if (!Activate(preset)) {
        // The one size a converter may refuse: an image (of per-pixel
        // backgrounds) that is not the frame.
        TSharedPtr<CSourceInfoReduceObject> info = m_reader.sourceInfo();
        if (info && (info->imageWidth != width() || info->imageHeight != height()))
            return Fail("frame %llu: preset %u cannot be converted to \"%s\"; the source info's image is %ux%u, "
                        "the frame %ux%u",
                        static_cast<unsigned long long>(index), preset, UnitToString(m_unit), info->imageWidth,
                        info->imageHeight, width(), height());
        return Fail("frame %llu: preset %u cannot be converted to \"%s\"", static_cast<unsigned long long>(index),
                    preset, UnitToString(m_unit));
    }
    m_decoded = index;
    return true;
}

bool CRecordingReduction::Reduce(uint64_t index, float* values, unsigned char* status, size_t capacity)
{
    m_error = CString();
    if (!isOpen()) return Fail("no recording is open");
    if (!values || !status || capacity < pixels())
        return Fail("buffers of %llu pixels cannot hold a %ux%u frame",
                    static_cast<unsigned long long>(values && status ? capacity : 0), width(), height());
    if (!Decode(index)) return false;
    const unsigned n = static_cast<unsigned>(pixels());
    std::memset(status, 0, n);
    if (!m_context->Convert(raw(), STypedData(values, dtFlt32), status, n))
        return Fail("frame %llu: the conversion to \"%s\" failed", static_cast<unsigned long long>(index),
                    UnitToString(m_unit));
    return true;
}

TSharedPtr<CFrameInfoReduceObject> CRecordingReduction::FrameInfo(uint64_t index)
{
    m_error = CString();
    if (!isOpen()) {
        Fail("no recording is open");
        return nullptr;
    }
    uint8_t preset = 0;
    if (!m_reader.DecodeFrame(index, STypedData(static_cast<void*>(nullptr), dtNoData), 0, preset)) {
        Fail("frame %llu: %s", static_cast<unsigned long long>(index), m_reader.lastError().c_str());
        return nullptr;
    }
    // The raw pixels held stay those of the last Decode.
    TSharedPtr<CFrameInfoReduceObject> info = m_reader.reduceObjs().GetFrameInfo(preset, false);
    if (!info) {
        Fail("frame %llu carries no frame info", static_cast<unsigned long long>(index));
        return nullptr;
    }
    // A copy, so that the next frame decoded does not change it; made here
    // rather than by Duplicate, whose pointer to the base type must not be
    // released last through a pointer to this type.
    return TSharedPtr<CFrameInfoReduceObject>(new CFrameInfoReduceObject(*info));
}

} // namespace orv::reduce
