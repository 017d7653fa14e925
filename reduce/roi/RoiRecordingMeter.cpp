// Region figures over a recording: the frame is converted once per distinct
// set of object parameters among the regions, and each region measured in
// its own.
#include "reduce/roi/RoiRecordingMeter.h"

#include <cstdarg>

namespace orv::reduce {

bool CRoiRecordingMeter::Fail(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_error = CString::FromFormatV(format, args);
    va_end(args);
    return false;
}

bool CRoiRecordingMeter::Prepare(CRecordingReduction& reduction, CRoiList& list, double emissivity, double distance)
{
    m_error = CString();
    m_reduction = nullptr;
    m_groups.clear();
    m_twins.clear();
    if (!reduction.isOpen()) return Fail("no recording is open");
    if (reduction.width() == 0 || reduction.height() == 0 || reduction.width() > 0xFFFF ||
        reduction.height() > 0xFFFF)
        return Fail("frames of %u x %u cannot carry regions", reduction.width(), reduction.height());
    list.SetImageSize(static_cast<unsigned short>(reduction.width()), static_cast<unsigned short>(reduction.height()));
    if (!m_meter.Prepare(list)) return Fail("the region list has no image size");
    m_emissivity = emissivity;
    m_distance = distance;
    m_groups.add(SGroup{emissivity, distance, {}});
    for (size_t i = 0; i < list.size(); ++i) {
        const SRoi& r = *list.at(unsigned(i));
        const double e = r.useEmissivity ? r.emissivity : emissivity;
        const double d = r.useDistance ? r.distance : distance;
        if (r.useEmissivity && !(e > 0 && e <= 1))
            return Fail("region %zu \"%s\": emissivity %g outside (0, 1]", i, r.name.c_str(), e);
        if (r.useDistance && !(d >= 0 && d < 1e300))
            return Fail("region %zu \"%s\": distance %g is not a distance", i, r.name.c_str(), d);
        size_t g = 0;
        while (g < m_groups.size() && !(m_groups.get(g).emissivity == e && m_groups.get(g).distance == d)) ++g;
        if (g == m_groups.size()) m_groups.add(SGroup{e, d, {}});
        m_groups.get(g).regions.add(i);
    }
    // Parameters are set on a reduction before its first frame: a twin per
    // set, instead of switching one reduction back and forth.
    for (size_t g = 1; g < m_groups.size(); ++g) {
        std::unique_ptr<CRecordingReduction> twin = reduction.Clone();
        if (!twin) return Fail("regions with their own emissivity or distance need the recording opened by path");
        if (!twin->SetObjectParameters(m_groups.get(g).emissivity, m_groups.get(g).distance))
            return Fail("%s", twin->lastError().c_str());
        m_twins.push_back(std::move(twin));
    }
    m_values.resize(reduction.pixels());
    m_status.resize(reduction.pixels());
    m_reduction = &reduction;
    return true;
}

bool CRoiRecordingMeter::Measure(uint64_t index, TArray<SRoiFigures>& out)
{
    m_error = CString();
    if (!m_reduction) return Fail("no regions are prepared");
    out.resize(m_meter.size());
    // Group 0 last, so that values() end as the caller's parameters give them.
    bool ok = true;
    for (size_t k = m_groups.size(); ok && k-- > 0;) {
        const SGroup& g = m_groups.get(k);
        CRecordingReduction& r = k == 0 ? *m_reduction : *m_twins[k - 1];
        if (!r.Reduce(index, m_values.data(), m_status.data(), m_values.size())) ok = Fail("%s", r.lastError().c_str());
        for (size_t n = 0; ok && n < g.regions.size(); ++n) {
            const size_t i = g.regions.get(n);
            if (!m_meter.Measure(i, STypedData(m_values.data(), dtFlt32), m_status.data(), out.get(i)))
                ok = Fail("frame %llu: region %zu cannot be measured", static_cast<unsigned long long>(index), i);
        }
    }
    return ok;
}

} // namespace orv::reduce
