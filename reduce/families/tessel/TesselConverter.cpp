#include "reduce/families/tessel/TesselConverter.h"

#include <cmath>
#include <cstdlib>

#include "reduce/convert/TemperatureScale.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

namespace rec = tesselRecord;
constexpr unsigned short kHigh = CTesMeasConv::kMaxImage;

TSharedPtr<CTesselFactoryCalReduceObject> Calibration(CReduceObjectArray& objs, int preset)
{
    return objs.GetObjectOfType(CTesselFactoryCalReduceObject::typeID, preset, false)
        .DynamicCast<CTesselFactoryCalReduceObject>();
}

_object_par_t ObjectRecord(const CObjectParametersReduceObject* p)
{
    if (p) return ObjectParamsAs<_object_par_t>(*p);
    // What a recording without object parameters is taken to show.
    _object_par_t o;
    o.distance = 2.0f;
    o.relativeHumidity = 0.3f;
    return o;
}

// The drift sensors of the frame, if the frame info carries all three as
// finite numbers.
bool Sensors(CReduceObjectArray& objs, unsigned char preset, _imageinfo_t& info)
{
    TSharedPtr<CFrameInfoReduceObject> frame = objs.GetFrameInfo(preset, false);
    if (!frame) return false;
    for (int k = 0; k < 3; ++k) {
        const CString text = frame->extra.GetValue(kTesselSensorKeys[k]);
        if (text.length() == 0) return false;
        char* end = nullptr;
        const double v = std::strtod(text.c_str(), &end);
        if (end == text.c_str() || !std::isfinite(v)) return false;
        info.sensor[9 + k] = float(v);
    }
    return true;
}

} // namespace

void TesselRecords(const CTesselFactoryCalReduceObject& cal, _adjust_par_t& a, _cal_param_t& c,
                   _tdrift_par_t& d)
{
    a.adjustMode = GetRecordValue<uint16_t>(cal.record, rec::adjustMode);
    a.gain = cal.GetFloat(rec::gain);
    a.offset = cal.GetFloat(rec::offset);
    c.R = cal.GetFloat(rec::R);
    c.B = cal.GetFloat(rec::B);
    c.F = cal.GetFloat(rec::F);
    c.alpha1 = cal.GetFloat(rec::alpha1);
    c.alpha2 = cal.GetFloat(rec::alpha2);
    c.beta1 = cal.GetFloat(rec::beta1);
    c.beta2 = cal.GetFloat(rec::beta2);
    c.X = cal.GetFloat(rec::X);
    c.clampHighTemp = cal.GetFloat(rec::clampHighTemp);
    c.validHighTemp = cal.GetFloat(rec::validHighTemp);
    c.validLowTemp = cal.GetFloat(rec::validLowTemp);
    c.clampLowTemp = cal.GetFloat(rec::clampLowTemp);
    c.rangeHighTemp = cal.GetFloat(rec::rangeHighTemp);
    c.rangeLowTemp = cal.GetFloat(rec::rangeLowTemp);
    c.driftK0 = cal.GetFloat(rec::driftK0);
    c.driftK1 = cal.GetFloat(rec::driftK1);
    c.driftA9 = cal.GetFloat(rec::driftA9);
    c.driftB9 = cal.GetFloat(rec::driftB9);
    c.driftA10 = cal.GetFloat(rec::driftA10);
    c.driftB10 = cal.GetFloat(rec::driftB10);
    c.driftC11 = cal.GetFloat(rec::driftC11);
    d.t0 = cal.GetFloat(rec::driftT0);
    d.k2 = cal.GetFloat(rec::driftK2);
    // A calibration carries a drift model when its gain at t0 is positive.
    d.driftOn = c.driftK0 > 0.0f;
}

bool CTesselConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts) return false;
    if (!objs.HasObjectOfType(CTesselFactoryCalReduceObject::typeID, true)) return false;
    units.add(unitCounts);
    units.add(unitRadianceFactory);
    units.add(unitObjectSignal);
    units.add(unitTemperatureFactory);
    return true;
}

CTesselConverter::CTesselConverter() : TNamedConverter(kPresets, kHigh)
{
    for (CTesMeasConv*& c : conv) c = new CTesMeasConv;
}

CTesselConverter::~CTesselConverter()
{
    for (CTesMeasConv* c : conv) delete c;
}

bool CTesselConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out,
                              ETempType outTemp, bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!IConverter::Update(base, baseTemp, objs, out, outTemp, presets, numPresets, reserved)) return false;
    TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(false);
    const _object_par_t object = ObjectRecord(params.get());
    _imageinfo_t info;
    const bool sensors = Sensors(objs, firstActivePreset, info);
    bool transmissionSet = false;
    for (int i = 0; i < kPresets; ++i) {
        lutValid[i] = false;
        TSharedPtr<CTesselFactoryCalReduceObject> cal = Calibration(objs, i);
        present[i] = cal && cal->valid;
        if (!present[i]) {
            if (presetActive[i]) return false;
            continue;
        }
        _adjust_par_t adjust;
        _cal_param_t calib;
        _tdrift_par_t drift;
        TesselRecords(*cal, adjust, calib, drift);
        CTesMeasConv& m = *conv[i];
        m.init(&adjust, &object, &calib);
        m.setDriftPar(&drift);
        // The correction applies where the model and this frame's readings
        // are both there; otherwise the image values stand as they are.
        m.setDriftMode(drift.driftOn && sensors ? 1 : 0);
        if (m.driftMode == 1) m.UpdateFromTempSens(&info);
        if (params && (!transmissionSet || i == firstActivePreset)) {
            params->atmosphericTransmission = float(m.getUsedAtmTao());
            transmissionSet = true;
        }
    }
    return true;
}

bool CTesselConverter::ChangeObjectParameters(CObjectParametersReduceObject* params)
{
    if (!params) return false;
    for (int i = 0; i < kPresets; ++i) {
        if (!presetActive[i] || !present[i]) continue;
        _object_par_t o;
        if (!conv[i]->getObjPar(&o)) continue;
        o.emissivity = params->emissivity;
        o.distance = params->distance;
        conv[i]->setObjPar(&o);
        lutValid[i] = false;
    }
    return true;
}

int CTesselConverter::Preset(unsigned char preset) const
{
    const unsigned p = preset >= 255 ? firstActivePreset : preset;
    return p < unsigned(kPresets) && presetActive[p] && present[p] ? int(p) : -1;
}

bool CTesselConverter::UpdateLUT(unsigned char preset)
{
    if (preset >= kPresets || !present[preset]) return false;
    if (lutValid[preset]) return true;
    conv[preset]->updateLUT();
    lutValid[preset] = true;
    return true;
}

float* CTesselConverter::Table(int p)
{
    if (!UpdateLUT(static_cast<unsigned char>(p))) return nullptr;
    CTesMeasConv& m = *conv[p];
    switch (outputUnit) {
    case unitTemperatureFactory: return const_cast<float*>(m.TemperatureTable(outputTempType));
    case unitRadianceFactory: return m.lutRad;
    case unitObjectSignal: return m.lutObjSig;
    default: return nullptr;
    }
}

bool CTesselConverter::SignalToOutput(unsigned short signal, float& out, unsigned char& status,
                                      unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    const CTesMeasConv& m = *conv[p];
    switch (outputUnit) {
    case unitTemperatureFactory:
        out = float(priv::ConvertScale(m.imgToTemp(signal, &status), tempKelvin, outputTempType));
        return true;
    case unitRadianceFactory: out = float(m.imgToRadiance(signal, &status)); return true;
    case unitObjectSignal: out = float(m.imgToObjectSignal(signal, &status)); return true;
    default: return false;
    }
}

bool CTesselConverter::OutputToSignal(float in, unsigned short& signal, unsigned char& status,
                                      unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    const CTesMeasConv& m = *conv[p];
    status = 0;
    switch (outputUnit) {
    case unitTemperatureFactory: signal = m.tempToImg(priv::ConvertScale(in, outputTempType, tempKelvin)); return true;
    case unitRadianceFactory: signal = m.radToImg(in); return true;
    case unitObjectSignal: signal = m.objSigToImg(in); return true;
    default: return false;
    }
}

bool CTesselConverter::SignalToOutput(unsigned short first, unsigned short last, float* out,
                                      unsigned char* status, unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    if (last < first) return true;
    // Inside the 14-bit range the tables answer; beyond it, value by value.
    if (last <= kHigh) {
        float* table = Table(p);
        if (!table) return false;
        for (unsigned s = first; s <= last; ++s) {
            out[s - first] = table[s];
            if (status) status[s - first] = conv[p]->lutStatus[s];
        }
        return true;
    }
    for (unsigned s = first; s <= last; ++s) {
        unsigned char st = 0;
        if (!SignalToOutput(static_cast<unsigned short>(s), out[s - first], st, static_cast<unsigned char>(p)))
            return false;
        if (status) status[s - first] = st;
    }
    return true;
}

bool CTesselConverter::BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset)
{
    return SignalToOutput(TruncatedSignal(in), out, status, preset);
}

bool CTesselConverter::PresetTable(int preset, float*& table, unsigned char*& status)
{
    if (!(table = Table(preset))) return false;
    status = conv[preset]->lutStatus;
    return true;
}

} // namespace orv::reduce
