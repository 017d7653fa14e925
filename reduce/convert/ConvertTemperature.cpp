// Temperature scale change of index lists, every pair of element types.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

void priv::ConvertScaleInPlace(double* values, unsigned int n, ETempType from, ETempType to)
{
    WithScale<tempCelsius>(from, [&]<ETempType F>() {
        WithScale<F>(to, [&]<ETempType T>() {
            for (unsigned int i = 0; i < n; ++i) values[i] = ConvertScale<F, T>(values[i]);
        });
    });
}

namespace {

template <class S, class D>
struct TConvertTemperature {
    static bool Run(const void* src, void* dst, const unsigned int* indices, unsigned int n, ETempType from,
                    ETempType to)
    {
        return ConvertTemperature<S, D>(static_cast<D*>(dst), static_cast<S*>(const_cast<void*>(src)), indices, n, from,
                                        to);
    }
};

} // namespace

const std::array<TConvertTemperatureKernel, 100> vecConvertTemperature =
    MakePairs<TConvertTemperatureKernel, TConvertTemperature>(std::make_index_sequence<100>{});

} // namespace orv::reduce
