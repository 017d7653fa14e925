#include "reduce/objects/VisualPixelDataReduceObject.h"

#include <cmath>
#include <cstring>

#include "orv/Bitmap.h"
#include "orv/Memory.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CVisualPixelDataReduceObject::Register()
{
    return reduceObjectFactory().Register<CVisualPixelDataReduceObject>(kName, typeID);
}

CVisualPixelDataReduceObject::CVisualPixelDataReduceObject()
{
    valid = true;
    preset = 0;
    persist = false;
    InitBitmap(m_source);
    InitBitmap(m_scaled);
    InitBitmap(m_cropped);
}

CVisualPixelDataReduceObject::~CVisualPixelDataReduceObject() { Release(); }

void CVisualPixelDataReduceObject::Release()
{
    DestroyBitmap(m_source);
    DestroyBitmap(m_scaled);
    DestroyBitmap(m_cropped);
    for (TArray<SRecord>& list : records) list.Destroy();
    Free(m_data);
    m_data = nullptr;
}

void CVisualPixelDataReduceObject::Init(SBitmap bitmap, SVisualPixelData* data, unsigned int word1,
                                        unsigned int word2)
{
    Release();
    m_word1 = word1;
    m_word2 = word2;
    m_source = bitmap;
    m_data = data;
}

SBitmap CVisualPixelDataReduceObject::GetCroppedBitmap(int x, int y, float zoom)
{
    if (m_cropped.pixels) return m_cropped;
    if (!m_source.pixels || m_source.bitsPerPixel != 24 || !(zoom >= 1.0f) || !std::isfinite(zoom)) return m_cropped;

    const auto cropWidth = static_cast<uint32_t>(static_cast<float>(m_source.width) / zoom);
    const auto cropHeight = static_cast<uint32_t>(static_cast<float>(m_source.height) / zoom);
    if (cropWidth == 0 || cropHeight == 0) return m_cropped;
    if (!CreateBitmap(cropWidth, cropHeight, 24, m_cropped) || !m_cropped.pixels) return m_cropped;

    const uint32_t left = (m_source.width - cropWidth) / 2;
    const uint32_t top = (m_source.height - cropHeight) / 2;
    // x and y move the window from the centre without an edge test of their
    // own; only the part of each row that lies inside the source is copied.
    const long long sourceBytes = static_cast<long long>(m_source.bytesPerRow) * m_source.height;
    const long long rowBytes = m_cropped.bytesPerRow;
    for (uint32_t r = 0; r < cropHeight; ++r) {
        unsigned char* target = m_cropped.pixels + static_cast<size_t>(r) * m_cropped.bytesPerRow;
        long long from = (static_cast<long long>(top) + y + r) * m_source.bytesPerRow +
                         (static_cast<long long>(left) + x) * 3;
        long long to = from + rowBytes;
        long long skip = from < 0 ? -from : 0;
        if (to > sourceBytes) to = sourceBytes;
        if (from + skip >= to) continue;
        std::memcpy(target + skip, m_source.pixels + from + skip, static_cast<size_t>(to - from - skip));
    }
    return m_cropped;
}

SBitmap CVisualPixelDataReduceObject::GetScaledBitmap(unsigned int width, unsigned int height, float zoom, short x,
                                                      short y)
{
    SBitmap cropped = GetCroppedBitmap(x, y, zoom);
    if (m_scaled.pixels || !cropped.pixels) return m_scaled;
    // Shrinking and enlarging resize differently; the test is made on the
    // scaled bitmap as it was before it is created.
    const int mode = m_scaled.width < cropped.width ? 2 : 1;
    if (!CreateBitmap(width, height, 24, m_scaled) || !m_scaled.pixels) return m_scaled;
    ResizeImage(m_cropped, m_scaled, mode);
    return m_scaled;
}

TSharedPtr<IReduceObject> CVisualPixelDataReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CVisualPixelDataReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    SBitmap source;
    InitBitmap(source);
    if (m_source.pixels && CreateBitmap(m_source.width, m_source.height, m_source.bitsPerPixel, source) &&
        source.bytesPerRow == m_source.bytesPerRow)
        std::memcpy(source.pixels, m_source.pixels, static_cast<size_t>(m_source.bytesPerRow) * m_source.height);
    // The visual block carries no size of its own, so a copy cannot hold it.
    target->Init(source, nullptr, m_word1, m_word2);
    for (int i = 0; i < 3; ++i) target->records[i] = records[i];
    target->m_last = m_last;
    return copy;
}

} // namespace orv::reduce
