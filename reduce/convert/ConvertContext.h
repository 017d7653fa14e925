#pragma once
// CConvertContext: the caller's pipeline for one recording. It picks the
// converter for a wanted unit, gathers the correction objects, corrects raw
// frames and carries pixels from the base unit to the wanted unit. Without a
// converter (the wanted unit is the base unit) it copies with a type change.
//
// Calling order: setReduceObjs, SetUnit, Update, then per frame ApplyNUC or
// Abate and Convert. SetUnit never updates the converter, so each SetUnit is
// followed by Update. One context serves one thread at a time.
#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "orv/Types.h"
#include "reduce/convert/Converter.h"
#include "reduce/kernels/Regions.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"

namespace orv::reduce {

class CReduceObjectArray;

class CConvertContext {
public:
    CConvertContext() = default;
    CConvertContext(const CConvertContext&) = delete;
    CConvertContext& operator=(const CConvertContext&) = delete;
    ~CConvertContext();

    // Binding does not touch the converter: SetUnit and Update follow.
    void setReduceObjs(CReduceObjectArray* objs) { m_reduceObjs = objs; }
    CReduceObjectArray* reduceObjs() const { return m_reduceObjs; }
    TSharedPtr<IConverter> converter() const { return m_converter; }

    // The units this recording can be shown in; false with no array.
    bool GetUnits(TArray<EUnit>& units);
    // Chooses the converter; none when the unit (and for temperatures the
    // scale) is the recording's own.
    bool SetUnit(EUnit unit, ETempType tempType);
    // Refreshes the correction objects, the active presets and the converter.
    // reserved is handed to the converter untouched.
    bool Update(bool* presets, unsigned char numPresets, unsigned int reserved);

    bool needToConvert() const { return !m_converter.isNull(); }
    bool needToApplyNUC() const;

    // Corrects with the data of the first active preset; result tells where
    // the frame now lies (src untouched, or dst).
    bool ApplyNUC(STypedData src, STypedData dst, unsigned int n, STypedData& result);
    // The same, with the frame always ending up in dst.
    bool ApplyNUC(STypedData src, STypedData dst, unsigned int n);
    // Merges the frames of the active presets (frames[i] for preset i) into
    // dst, writing each pixel's preset to status.
    bool Abate(const STypedData* frames, unsigned int n, STypedData dst, unsigned char* status);

    bool Convert(STypedData src, STypedData dst, unsigned char* status, unsigned int n);
    bool Convert(STypedData src, const unsigned char* presetIndex, STypedData dst, unsigned char* status,
                 unsigned int n);
    bool Convert(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst, unsigned char* status);
    bool Convert(STypedData src, const unsigned char* presetIndex, const unsigned int* indices, unsigned int n,
                 STypedData dst, unsigned char* status);
    bool Convert(STypedData src, unsigned short width, unsigned short height, SArea area, STypedData dst,
                 unsigned char* status);
    bool Convert(STypedData src, const unsigned char* presetIndex, unsigned short width, unsigned short height,
                 SArea area, STypedData dst, unsigned char* status);
    bool Convert(STypedData src, unsigned short width, unsigned short height, const TArray<SScanLine>& lines,
                 STypedData dst, unsigned char* status);
    bool Convert(STypedData src, const unsigned char* presetIndex, unsigned short width, unsigned short height,
                 const TArray<SScanLine>& lines, STypedData dst, unsigned char* status);
    bool Convert(STypedData src, unsigned short width, unsigned short height, SArea area, const unsigned char* mask,
                 unsigned int maskWidth, STypedData dst, unsigned char* status);
    bool Convert(STypedData src, const unsigned char* presetIndex, unsigned short width, unsigned short height,
                 SArea area, const unsigned char* mask, unsigned int maskWidth, STypedData dst,
                 unsigned char* status);

    // One value from base unit to output unit and back.
    bool Convert(float in, float& out, unsigned char& status, unsigned char preset);
    bool ConvertBack(float in, float& out, unsigned char& status, unsigned char preset);

    bool canChangeObjectParameters();
    bool ChangeObjectParameters(CObjectParametersReduceObject* params);
    // Spelled so on purpose; identity can always be undone.
    bool isReversable();
    unsigned char GuessPresetFromOutput(float value);

    // Replace the measurement parameters of a recording for a while, and put
    // them back. Neither tells a converter: the caller then runs Update or
    // ChangeObjectParameters.
    static bool OverrideObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& params,
                                         CObjectParametersReduceObject& saved);
    static bool RestoreObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& saved);

    EUnit unit() const { return m_unit; }
    ETempType tempType() const { return m_tempType; }
    const bool* presetActive() const { return m_presetActive; }
    unsigned char firstActivePreset() const { return m_firstActivePreset; }
    unsigned char numPresets() const { return m_numPresets; }

private:
    TSharedPtr<IConverter> m_converter;
    TSharedPtr<CAbateCfgReduceObject> m_abateCfg;
    TSharedPtr<CCorrectionCfgReduceObject> m_correctionCfg;
    TSharedPtr<CCorrectionReduceObject> m_corrections[8];
    EUnit m_unit = unitCounts;
    ETempType m_tempType = tempCelsius;
    CReduceObjectArray* m_reduceObjs = nullptr;
    bool m_presetActive[8] = {false, false, false, false, false, false, false, false};
    unsigned char m_firstActivePreset = 0;
    unsigned char m_numPresets = 0;
};

} // namespace orv::reduce
