#pragma once
// CCorrectionReduceObject: the per-pixel correction tables of one preset
// (gain, offset, bad pixels with their replacements).
#include <cstdint>

#include "orv/File.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// The packed header of payload versions above 0x10000: 32 bytes, then the
// planes present, in the order gains, offsets, bad pixels, replacements.
namespace correctionRecord {
// The header before the planes.
struct SHead {
    uint32_t version = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t planes = 0;
};
inline constexpr uint32_t kSize = 32;
using Table = TRecordTable<SHead, kSize, TConst<0, uint32_t, kSize>, TField<&SHead::version, 4>,
                           TField<&SHead::width, 8>, TField<&SHead::height, 12>, TField<&SHead::planes, 16>,
                           TReserved<17, 15>>;
} // namespace correctionRecord

class CCorrectionReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{4AD3EFCE-D157-4203-BFC2-3979EE047FE4}");
    static constexpr const char* kName = "Correction";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // Bits of the plane mask.
    enum : unsigned char { planeGains = 1, planeOffsets = 2, planeBadPixels = 4, planeAll = 7 };

    CCorrectionReduceObject();
    ~CCorrectionReduceObject() override;
    CCorrectionReduceObject(const CCorrectionReduceObject&) = delete;
    CCorrectionReduceObject& operator=(const CCorrectionReduceObject&) = delete;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    // Frees the tables, clears sizes, mask and flip flags, and valid.
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Allocates the planes of the mask that are missing, with their default
    // values; a change of size or preset first drops everything.
    void Create(unsigned int width, unsigned int height, int preset, unsigned char planes);
    // Resets the existing planes of the mask to their default values.
    void Init(unsigned char planes);
    // Mirrors the tables in place; the flags are left alone.
    void Flip(bool horizontal, bool vertical);
    // Brings the tables to the wanted orientation from the current one.
    void SetFlipped(bool horizontal, bool vertical);

    // The table files: path with its extension changed to, or followed by,
    // ".mxg", ".mxo" and ".mbp".
    bool Load(IFileSystem* fs, CString path);
    bool Save(IFileSystem* fs, CString path);

    size_t pixelCount() const { return static_cast<size_t>(width) * height; }

    float* gains = nullptr;
    int16_t* offsets = nullptr;
    uint8_t* badPixels = nullptr;
    uint32_t* replacements = nullptr; // flat index of the pixel that stands in
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t planes = 0;
    bool verticalFlip = false;
    bool horizontalFlip = false;
};

} // namespace orv::reduce
