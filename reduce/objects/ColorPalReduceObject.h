#pragma once
// CColorPalReduceObject: a camera's colour palette block and the 256-entry
// RGB table built from it on demand.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/SceneBlocks.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CColorPalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{1D63A136-450C-466B-BC14-7492DBD6C7B4}");
    static constexpr const char* kName = "ColorPal";
    static constexpr unsigned kTableEntries = 256;
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CColorPalReduceObject();
    ~CColorPalReduceObject() override;
    CColorPalReduceObject(const CColorPalReduceObject&) = delete;
    CColorPalReduceObject& operator=(const CColorPalReduceObject&) = delete;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;

    // Keeps a copy of size bytes of the block; drops any table built before.
    void Init(SColorPal* data, unsigned int size, unsigned int word);
    void Build256ColorPalette();
    // Copies the 256 RGB entries (768 bytes); false without a block.
    bool GetRGBPalette(SRGB* out);

    const SColorPal* block() const { return m_block; }
    unsigned int blockSize() const { return m_size; }
    unsigned int word() const { return m_word; }
    const SRGB* table() const { return m_table; }
    // The first two are the block's two colours once the table is built.
    const SRGB* colors() const { return m_colors; }

private:
    void Release();

    SColorPal* m_block = nullptr;
    unsigned int m_size = 0;
    unsigned int m_word = 0;
    SRGB* m_table = nullptr;
    SRGB m_colors[6];
};

} // namespace orv::reduce
