// Black body band radiance, the radiance polynomial of single values and of
// count ranges, and the object signal fit of calibrations.
#include <cmath>
#include <cstring>

#include "orv/Math.h"
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

double Radiance(double tempC, double bandStart, double bandEnd, double scale)
{
    const double h = 0.01;
    const double start = h * std::trunc(bandStart / h);
    const double end = h * std::trunc(bandEnd / h);
    const double steps = std::trunc(std::ceil((end - start) / h));
    if (!(steps >= 0.0)) return 0.0;
    const long n = long(steps);
    const double kelvin = tempC + 273.15;
    double sum = 0.0;
    double previous = 0.0;
    for (long i = 0; i <= n; ++i) {
        const double w = double(i) * h + start;
        const double f = scale * 11910.7 / ((std::exp(14388.4 / (w * kelvin)) - 1.0) * std::pow(w, 5.0));
        if (i > 0) sum += (previous + f) * 0.5 * h;
        previous = f;
    }
    return sum;
}

double _ToRadiance(double signal, const double* coefficients, int order, double background, double scale)
{
    return priv::RadianceValue(signal, coefficients, order, background, scale);
}

double ToRadiance(double signal, double* coefficients, int order, double background, double scale)
{
    return priv::RadianceValue(signal, coefficients, order, background, scale);
}

namespace {

// Radiance and object signal R / (exp(B / (273.15 + t)) - F) of each whole
// degree t of the range.
bool SampleObjectSignal(int tempLow, int tempHigh, double R, double B, double F, double bandStart, double bandEnd,
                        TArray<double>& signals, TArray<double>& radiances)
{
    if (tempLow < -274 || tempLow >= tempHigh) return false;
    const size_t count = size_t(int64_t(tempHigh) - tempLow + 1);
    signals.reserve(count);
    radiances.reserve(count);
    for (int64_t t = tempLow; t <= tempHigh; ++t) {
        radiances.add(Radiance(double(t), bandStart, bandEnd, 1.0));
        signals.add(R / (std::exp(B / (273.15 + double(t))) - F));
    }
    return true;
}

bool Fit(TArray<double>& x, TArray<double>& y, double* out)
{
    TArray<double> coefficients;
    if (!LinearLeastSquareFit(x, y, 2, coefficients) || coefficients.size() < 3) return false;
    std::memcpy(out, coefficients.data(), 3 * sizeof(double));
    return true;
}

} // namespace

bool objSigToRad(int tempLow, int tempHigh, double R, double B, double F, double bandStart, double bandEnd,
                 double* radFromSig)
{
    TArray<double> signals, radiances;
    if (!SampleObjectSignal(tempLow, tempHigh, R, B, F, bandStart, bandEnd, signals, radiances)) return false;
    return Fit(signals, radiances, radFromSig);
}

bool objSigToRad(int tempLow, int tempHigh, double R, double B, double F, double bandStart, double bandEnd,
                 double* radFromSig, double* sigFromRad)
{
    TArray<double> signals, radiances;
    if (!SampleObjectSignal(tempLow, tempHigh, R, B, F, bandStart, bandEnd, signals, radiances)) return false;
    if (!Fit(signals, radiances, radFromSig)) return false;
    return Fit(radiances, signals, sigFromRad);
}

bool CountsToRadiance(unsigned short first, unsigned short last, float* out, unsigned char* status, bool check,
                      double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients,
                      int order, double background, double scale)
{
    if (last < first) return true;
    const unsigned int n = unsigned(last) - first + 1u;
    const bool judge = check && status;
    if (status && !check) std::memset(status, 0, n);
    const priv::SLimits limits{validLow, validHigh, clampLow, clampHigh};
    for (unsigned int k = 0; k < n; ++k) {
        float r = float(priv::RadianceValue(double(first + k), coefficients, order, background, scale));
        if (judge) status[k] = priv::ApplyLimits(r, limits);
        out[k] = r;
    }
    return true;
}

} // namespace orv::reduce
