#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "orv/PixelType.h"
#include "reduce/filters/BuiltinFilters.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/GenericFilter.h"
#include "reduce/filters/PixelTypes.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// A filter that only names itself; counts its destructions.
template <int N>
class TStubFilter : public IFilter {
public:
    static inline int destroyed = 0;
    ~TStubFilter() override { ++destroyed; }
    const char* GetName() const override { return "stub"; }
    bool HasPixels(SGuid) const override { return false; }
    bool GetPixels(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, void**, int&) override { return false; }
    bool ParseTime(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, CDateTime&) override { return false; }
    bool ParseBasicInfo(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t&, uint64_t&,
                        CDateTime&) override
    {
        return false;
    }
};
using CStubA = TStubFilter<1>;
using CStubB = TStubFilter<2>;

constexpr SGuid typeX = MakeGuid("00000001-0000-0000-0000-000000000001");
constexpr SGuid typeY = MakeGuid("00000001-0000-0000-0000-000000000002");
constexpr SGuid typeZ = MakeGuid("00000001-0000-0000-0000-000000000003");

} // namespace

TEST(FilterFactory, RegistrationNamesAndFirstClaimant)
{
    CFilterFactoryImpl factory;
    EXPECT_TRUE(factory.Register<CStubA>("A", {typeX, typeY}));
    EXPECT_TRUE(factory.Register<CStubB>("B", {typeY, typeZ}));
    // A taken name changes nothing, also not the earlier entry's list.
    EXPECT_FALSE(factory.Register<CStubB>("A", {typeZ}));
    ASSERT_NE(factory.ClaimedPixelTypes("A"), nullptr);
    EXPECT_EQ(factory.ClaimedPixelTypes("A")->size(), 2u);
    EXPECT_EQ(factory.ClaimedPixelTypes("C"), nullptr);

    TArray<CString> names{"stale"};
    factory.GetNames(names);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_TRUE(names[0] == "A");
    EXPECT_TRUE(names[1] == "B");
    EXPECT_TRUE(factory.IsRegistered("B"));
    EXPECT_FALSE(factory.IsRegistered("b"));

    // The first registered claimant wins a shared type.
    EXPECT_TRUE(factory.GetPixelTypeHandler(typeY) == "A");
    EXPECT_TRUE(factory.GetPixelTypeHandler(typeZ) == "B");
    EXPECT_TRUE(factory.IsPixelTypeHandled(typeZ));
    EXPECT_TRUE(dynamic_cast<CStubA*>(factory.CreateForPixelType(typeY).get()) != nullptr);

    // Unknown, empty and differently cased give nothing.
    const SGuid unknown = MakeGuid("00000001-0000-0000-0000-000000000004");
    EXPECT_TRUE(factory.GetPixelTypeHandler(unknown).empty());
    EXPECT_FALSE(factory.IsPixelTypeHandled(unknown));
    EXPECT_FALSE(factory.CreateForPixelType(unknown));
    EXPECT_FALSE(factory.CreateForPixelType(SGuid{}));
    EXPECT_FALSE(factory.Create("a"));
    EXPECT_FALSE(factory.Create(""));
}

TEST(FilterFactory, CreatedFiltersDieThroughTheirDestroyFunction)
{
    CFilterFactoryImpl factory;
    factory.Register<CStubA>("A", {typeX});
    const int before = CStubA::destroyed;
    {
        TSharedPtr<IFilter> f = factory.Create("A");
        ASSERT_TRUE(f);
        TSharedPtr<IFilter> copy = f;
        f = nullptr;
        EXPECT_EQ(CStubA::destroyed, before);
    }
    EXPECT_EQ(CStubA::destroyed, before + 1);

    // The generated destroy function deletes only its own class.
    CStubB other;
    const int otherBefore = CStubB::destroyed;
    CFilterFactory::TCreator<CStubA>::Destroy(&other);
    CFilterFactory::TCreator<CStubA>::Destroy(nullptr);
    EXPECT_EQ(CStubB::destroyed, otherBefore);
}

TEST(FilterFactory, BuiltinFiltersInListOrder)
{
    CFilterFactory* factory = filterFactory();
    ASSERT_NE(factory, nullptr);

    // Plug-ins may come first; the built-in ones follow in list order, the
    // generic filter last.
    TArray<CString> names;
    factory->GetNames(names);
    ASSERT_GE(names.size(), size_t(builtinFilterCount));
    const size_t first = names.size() - builtinFilterCount;
    for (unsigned i = 0; i < builtinFilterCount; ++i) EXPECT_TRUE(names[first + i] == builtinFilters[i].name) << i;
    EXPECT_STREQ(builtinFilters[builtinFilterCount - 1].name, "Generic");
    // Registering again is refused.
    EXPECT_TRUE(RegisterBuiltinFilters());
    factory->GetNames(names);
    EXPECT_EQ(names.size(), first + builtinFilterCount);

    for (unsigned i = 0; i < builtinFilterCount; ++i) {
        TSharedPtr<IFilter> f = factory->Create(builtinFilters[i].name);
        ASSERT_TRUE(f) << builtinFilters[i].name;
        EXPECT_STREQ(f->GetName(), builtinFilters[i].name);
    }

    for (SGuid root : {pixelGrayscale, pixelRGB, pixelYUV}) {
        TSharedPtr<IFilter> f = factory->CreateForPixelType(root);
        ASSERT_TRUE(f);
        EXPECT_STREQ(f->GetName(), "Generic");
    }
    // A filter that claims a header identifier answers to it as well.
    const std::pair<SGuid, const char*> headers[] = {
        {guidTLKRVHdr, "TLK-RV"}, {guidTLKMXHdr, "TLK-MX"}, {guidBRGHdr, "Brennic"}, {guidOSTHdr, "Ostrel"}};
    for (const auto& [id, name] : headers) {
        if (factory->IsRegistered(name)) {
            EXPECT_TRUE(factory->GetPixelTypeHandler(id) == name) << name;
        }
    }
    // Claimed by nobody on purpose.
    EXPECT_FALSE(factory->CreateForPixelType(guidMJPG));
    EXPECT_TRUE(factory->GetPixelTypeHandler(guidMJPG).empty());
    EXPECT_FALSE(factory->CreateForPixelType(SGuid{}));
    // Base types are not consulted: a grayscale-derived type is not generic.
    EXPECT_FALSE(factory->IsPixelTypeHandled(guidF7M0));
    EXPECT_FALSE(factory->IsPixelTypeHandled(pixelRGB48));
}

TEST(PixelTypeTable, RowsAndTheirRegistration)
{
    // The non-hex group of the V410 YUY2 type: "V4" reads 0x04, "10" 0x10.
    EXPECT_EQ(guidV410YUY2.Data3, 0x49F2);
    EXPECT_EQ(guidV410YUY2.Data4[0], 0x04);
    EXPECT_EQ(guidV410YUY2.Data4[1], 0x10);
    EXPECT_EQ(guidV410YUY2.Data4[2], 0x6C);

    // Filters own their rows in registration order, and identifiers are unique.
    const char* order[] = {"V410", "Bayer", "TLK-RV", "TLK-MX", "Brennic", "Sarnet",
                           "Kordan", "MX515", "Ostrel", "Velmar"};
    int last = -1;
    for (unsigned i = 0; i < kPixelTypeRowCount; ++i) {
        const SPixelTypeRow& row = pixelTypeTable[i];
        for (unsigned j = i + 1; j < kPixelTypeRowCount; ++j) EXPECT_NE(row.id, pixelTypeTable[j].id) << row.symbol;
        for (SGuid hdr : {guidTLKRVHdr, guidTLKMXHdr, guidBRGHdr, guidOSTHdr}) EXPECT_NE(row.id, hdr);
        if (!row.handler) continue;
        int pos = -1;
        for (int k = 0; k < 10; ++k)
            if (std::strcmp(order[k], row.handler) == 0) pos = k;
        ASSERT_GE(pos, 0) << row.symbol;
        EXPECT_GE(pos, last) << row.symbol;
        last = pos;
    }
    EXPECT_EQ(kPixelTypeRowCount, 32u);

    // Rows of the filters in this build, and the unclaimed ones, are in the
    // tree with the table's figures, uneven ones included.
    for (const SPixelTypeRow& row : pixelTypeTable) {
        if (row.handler && !filterFactory()->IsRegistered(row.handler)) continue;
        EXPECT_TRUE(PixelTypeName(row.id) == row.name) << row.symbol;
        EXPECT_EQ(PixelWidth(row.id), row.bytes) << row.symbol;
        EXPECT_EQ(PixelDataType(row.id), row.dataType) << row.symbol;
        EXPECT_EQ(PixelBaseType(row.id), row.base) << row.symbol;
    }
    // Header identifiers stay out of the tree.
    EXPECT_EQ(PixelWidth(guidTLKRVHdr), 0);
    // A second registration of the same rows adds nothing.
    EXPECT_EQ(RegisterPixelTypeRows(nullptr), 0u);
}

namespace {

// Reports a preset and records what ParseFrame was given.
class CPresetFilter : public CStubA {
public:
    bool parseOk = true;
    uint8_t framePreset = 3;
    STypedData lastPixels{static_cast<void*>(this), dtUInt8};

    bool ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset) override
    {
        preset = framePreset;
        return parseOk;
    }
    bool ParseFrame(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, STypedData pixels, CReduceObjectArray&,
                    uint8_t& preset) override
    {
        lastPixels = pixels;
        preset = framePreset;
        return true;
    }
};

} // namespace

TEST(FilterContract, CountPresets)
{
    CPresetFilter f;
    unsigned char frame[4] = {};
    uint32_t counts[8] = {};
    EXPECT_TRUE(f.CountPresets(frame, 4, pixelGrayscale, 2, 1, 0, counts));
    EXPECT_TRUE(f.CountPresets(frame, 4, pixelGrayscale, 2, 1, 0, counts));
    EXPECT_EQ(counts[3], 2u);
    // Only sub-frame 0 counts.
    EXPECT_FALSE(f.CountPresets(frame, 4, pixelGrayscale, 2, 1, 1, counts));
    f.parseOk = false;
    EXPECT_FALSE(f.CountPresets(frame, 4, pixelGrayscale, 2, 1, 0, counts));
    // A preset beyond the eight slots is not counted.
    f.parseOk = true;
    f.framePreset = 8;
    EXPECT_FALSE(f.CountPresets(frame, 4, pixelGrayscale, 2, 1, 0, counts));
    uint32_t expected[8] = {0, 0, 0, 2, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(counts, expected, sizeof counts), 0);
}

TEST(FilterContract, DefaultOperations)
{
    CPresetFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 9;
    // ParseReduceObjects is ParseFrame without pixels.
    EXPECT_TRUE(f.ParseReduceObjects(nullptr, pixelGrayscale, 1, 1, 0, objects, preset));
    EXPECT_EQ(f.lastPixels.data, nullptr);
    EXPECT_EQ(f.lastPixels.type, dtNoData);
    EXPECT_EQ(preset, 3);

    CStubA plain;
    preset = 9;
    EXPECT_FALSE(plain.ParseFrame(nullptr, pixelGrayscale, 1, 1, 0, STypedData(), objects, preset));
    EXPECT_EQ(preset, 0);
    uint64_t counter = 7;
    EXPECT_FALSE(plain.ParseFrameCounter(nullptr, pixelGrayscale, 1, 1, 0, counter));
    EXPECT_EQ(counter, 0u);

    // StoreFrame copies as much as both sides hold.
    const unsigned char frame[6] = {1, 2, 3, 4, 5, 6};
    unsigned char out[8] = {};
    EXPECT_TRUE(plain.StoreFrame(frame, 6, pixelGrayscale, 3, 1, 1, 0, out, 4));
    const unsigned char expected[8] = {1, 2, 3, 4, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(out, expected, 8), 0);

}
