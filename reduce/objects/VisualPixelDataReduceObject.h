#pragma once
// CVisualPixelDataReduceObject: a visual image of the scene, with a cropped
// and a scaled view made once on demand.
#include <cstdint>

#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/objects/SceneBlocks.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CVisualPixelDataReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{AD995914-47A1-4DCD-829C-CB1AAFC595DA}");
    static constexpr const char* kName = "VisualPixelData";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // A record of the three lists this library carries and frees.
    struct SRecord {
        uint32_t words[3];
    };

    CVisualPixelDataReduceObject();
    ~CVisualPixelDataReduceObject() override;
    CVisualPixelDataReduceObject(const CVisualPixelDataReduceObject&) = delete;
    CVisualPixelDataReduceObject& operator=(const CVisualPixelDataReduceObject&) = delete;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;

    // Drops the bitmaps, the lists and the old block, then keeps the words,
    // the source bitmap by value and data. Both pass to this object: the
    // bitmap's pixels must come from CreateBitmap, data from Alloc.
    void Init(SBitmap bitmap, SVisualPixelData* data, unsigned int word1, unsigned int word2);
    // The centre of the source cut by zoom, moved by (x, y); made once, later
    // calls return the first crop until Init. The pixels stay this object's.
    SBitmap GetCroppedBitmap(int x, int y, float zoom);
    // The crop resized to width by height; made once, like the crop.
    SBitmap GetScaledBitmap(unsigned int width, unsigned int height, float zoom, short x, short y);

    const SBitmap& source() const { return m_source; }
    const SVisualPixelData* block() const { return m_data; }
    unsigned int word1() const { return m_word1; }
    unsigned int word2() const { return m_word2; }

    TArray<SRecord> records[3];

private:
    void Release();

    unsigned int m_word1 = 0;
    unsigned int m_word2 = 0;
    SVisualPixelData* m_data = nullptr;
    SBitmap m_source;
    SBitmap m_scaled;
    SBitmap m_cropped;
    uint32_t m_last = 0;
};

} // namespace orv::reduce
