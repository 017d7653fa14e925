#include "reduce/objects/ColorPalReduceObject.h"

#include <cstring>

#include "orv/Memory.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace {

// Size of the block's fixed part that holds the entry count and the two colours.
constexpr unsigned kColorsEnd = colorPalRecord::color2.end();

uint8_t ToByte(double value)
{
    float f = static_cast<float>(value);
    if (f < 0.0f) f = 0.0f;
    if (f > 255.0f) f = 255.0f;
    return static_cast<uint8_t>(f);
}

// JPEG's YCbCr to RGB, in double, narrowed to float, limited and cut.
void YCbCrtoRGB(uint8_t y, uint8_t cb, uint8_t cr, uint8_t& r, uint8_t& g, uint8_t& b)
{
    const double Y = y, Cb = cb - 128.0, Cr = cr - 128.0;
    r = ToByte(Y + Cr * 1.4022);
    g = ToByte(Y - Cb * 0.344136 - Cr * 0.714136);
    b = ToByte(Y + Cb * 1.772);
}

} // namespace

bool CColorPalReduceObject::Register()
{
    return reduceObjectFactory().Register<CColorPalReduceObject>(kName, typeID);
}

CColorPalReduceObject::CColorPalReduceObject() = default;

CColorPalReduceObject::~CColorPalReduceObject() { Release(); }

void CColorPalReduceObject::Release()
{
    Free(m_block);
    m_block = nullptr;
    delete[] m_table;
    m_table = nullptr;
}

void CColorPalReduceObject::Init(SColorPal* data, unsigned int size, unsigned int word)
{
    m_size = size;
    m_word = word;
    // A table of the old block would no longer match.
    Release();
    if (!data || size == 0) {
        m_size = 0;
        return;
    }
    m_block = static_cast<SColorPal*>(Alloc(size));
    if (!m_block) {
        m_size = 0;
        return;
    }
    std::memcpy(m_block, data, size);
}

void CColorPalReduceObject::Build256ColorPalette()
{
    if (!m_block || m_table || m_size < kColorsEnd) return;
    const auto* bytes = reinterpret_cast<const uint8_t*>(m_block);
    m_table = new SRGB[kTableEntries]();

    // The two colours are stored Y, Cr, Cb; the entries Y, Cb, Cr.
    const uint8_t* c1 = bytes + colorPalRecord::color1.offset;
    const uint8_t* c2 = bytes + colorPalRecord::color2.offset;
    YCbCrtoRGB(c1[0], c1[2], c1[1], m_colors[0].red, m_colors[0].green, m_colors[0].blue);
    YCbCrtoRGB(c2[0], c2[2], c2[1], m_colors[1].red, m_colors[1].green, m_colors[1].blue);

    const uint16_t count = Get(bytes, colorPalRecord::numEntries);
    // The entry count is bounded by the table and by the bytes actually held.
    unsigned available = m_size > SColorPal::kEntriesOffset ? (m_size - SColorPal::kEntriesOffset) / 3 : 0;
    unsigned n = count;
    if (n > available) n = available;
    if (n > kTableEntries) n = kTableEntries;
    for (unsigned i = 0; i < n; ++i) {
        const uint8_t* e = bytes + SColorPal::kEntriesOffset + 3 * i;
        YCbCrtoRGB(e[0], e[1], e[2], m_table[i].red, m_table[i].green, m_table[i].blue);
    }
}

bool CColorPalReduceObject::GetRGBPalette(SRGB* out)
{
    Build256ColorPalette();
    if (!m_table || !out) return false;
    std::memcpy(out, m_table, sizeof(SRGB) * kTableEntries);
    return true;
}

TSharedPtr<IReduceObject> CColorPalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CColorPalReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->Init(m_block, m_size, m_word);
    if (m_table) {
        target->m_table = new SRGB[kTableEntries];
        std::memcpy(target->m_table, m_table, sizeof(SRGB) * kTableEntries);
    }
    std::memcpy(target->m_colors, m_colors, sizeof m_colors);
    return copy;
}

} // namespace orv::reduce
