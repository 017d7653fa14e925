// The frame forms of CTesMeasConv. The per-pixel forms take the source
// through a small double buffer (the element conversion of ConvertArray and
// the gather of GetImageData), run the chain and store through ConvertArray
// again, so that no template multiplies by type pairs here; the table forms
// are the shared look-up kernel.
#include <cmath>

#include "orv/ConvertArray.h"
#include "reduce/convert/TemperatureScale.h"
#include "reduce/families/tessel/TesMeasConv.h"
#include "reduce/kernels/ImageData.h"
#include "reduce/kernels/LUT.h"

namespace orv::reduce {

namespace {

constexpr unsigned int kChunk = 1024;

bool BadTypes(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}

// A source value as an image value: truncated toward zero like every element
// conversion; not-a-number is no image.
long ToImage(double v)
{
    if (std::isnan(v) || (v > -1.0 && v < 1.0)) return 0;
    if (v >= 65536.0) return 65536;
    if (v <= -1.0) return -1;
    return long(v);
}

enum EQuantity { kTemperature, kObjectSignal, kRadiance };

// Runs the chain over n elements, dense or gathered by indices.
bool Chain(const CTesMeasConv& m, EQuantity what, ETempType type, STypedData src, STypedData dst,
           unsigned char* status, const unsigned int* indices, unsigned int n)
{
    if (BadTypes(src, dst)) return false;
    const unsigned dstSize = DataTypeSize(dst.type), srcSize = DataTypeSize(src.type);
    double buffer[kChunk];
    for (unsigned int done = 0; done < n;) {
        const unsigned int count = n - done < kChunk ? n - done : kChunk;
        const STypedData in(buffer, dtFlt64);
        if (indices) {
            if (!GetImageData(src, nullptr, in, nullptr, indices + done, count)) return false;
        } else {
            const STypedData part(static_cast<const unsigned char*>(src.data) + size_t(done) * srcSize, src.type);
            if (!ConvertArray(in, part, count)) return false;
        }
        for (unsigned int i = 0; i < count; ++i) {
            unsigned char s = 0;
            const long img = ToImage(buffer[i]);
            const double sig = m.imgToObjectSignal(img, &s);
            if (what == kObjectSignal)
                buffer[i] = sig;
            else if (what == kRadiance)
                buffer[i] = m.objSigToRad(sig);
            else
                buffer[i] = priv::ConvertScale(m.objSigToTemp(sig), tempKelvin, type);
            if (status) status[done + i] = s;
        }
        STypedData out(static_cast<unsigned char*>(dst.data) + size_t(done) * dstSize, dst.type);
        if (!ConvertArray(out, in, count)) return false;
        done += count;
    }
    return true;
}

} // namespace

bool CTesMeasConv::imgToTemp(STypedData src, STypedData dst, unsigned char* status, unsigned int n,
                             ETempType type) const
{
    return Chain(*this, kTemperature, type, src, dst, status, nullptr, n);
}

bool CTesMeasConv::imgToTemp(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                             unsigned int n, ETempType type) const
{
    return Chain(*this, kTemperature, type, src, dst, status, indices, n);
}

bool CTesMeasConv::imgToObjectSignal(STypedData src, STypedData dst, unsigned char* status, unsigned int n) const
{
    return Chain(*this, kObjectSignal, tempKelvin, src, dst, status, nullptr, n);
}

bool CTesMeasConv::imgToObjectSignal(STypedData src, STypedData dst, unsigned char* status,
                                     const unsigned int* indices, unsigned int n) const
{
    return Chain(*this, kObjectSignal, tempKelvin, src, dst, status, indices, n);
}

bool CTesMeasConv::imgToRad(STypedData src, STypedData dst, unsigned char* status, unsigned int n) const
{
    return Chain(*this, kRadiance, tempKelvin, src, dst, status, nullptr, n);
}

bool CTesMeasConv::imgToRad(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                            unsigned int n) const
{
    return Chain(*this, kRadiance, tempKelvin, src, dst, status, indices, n);
}

bool CTesMeasConv::imgToTempLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n,
                                ETempType type)
{
    return ApplyLUT(src, dst, status, n, const_cast<float*>(TemperatureTable(type)), lutStatus, 0, kMaxImage);
}

bool CTesMeasConv::imgToTempLUT(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                                unsigned int n, ETempType type)
{
    return ApplyLUT(src, dst, status, indices, n, const_cast<float*>(TemperatureTable(type)), lutStatus, 0,
                    kMaxImage);
}

bool CTesMeasConv::imgToRadLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    return ApplyLUT(src, dst, status, n, lutRad, lutStatus, 0, kMaxImage);
}

bool CTesMeasConv::imgToRadLUT(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                               unsigned int n)
{
    return ApplyLUT(src, dst, status, indices, n, lutRad, lutStatus, 0, kMaxImage);
}

bool CTesMeasConv::imgToObjectSignalLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    return ApplyLUT(src, dst, status, n, lutObjSig, lutStatus, 0, kMaxImage);
}

bool CTesMeasConv::imgToObjectSignalLUT(STypedData src, STypedData dst, unsigned char* status,
                                        const unsigned int* indices, unsigned int n)
{
    return ApplyLUT(src, dst, status, indices, n, lutObjSig, lutStatus, 0, kMaxImage);
}

} // namespace orv::reduce
