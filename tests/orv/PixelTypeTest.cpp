#include <gtest/gtest.h>

#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "orv/PixelType.h"

using namespace orv;

TEST(PixelType, RootsAndOldCodes)
{
    EXPECT_EQ(GuidToString(pixelGrayscale), CString("{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}"));
    EXPECT_EQ(GuidToString(pixelYUV), CString("{30983C2C-6406-41A5-83DE-C5607B7A23A5}"));
    const std::pair<SGuid, int> widths[] = {{pixelGrayscale, 2}, {pixelUInt16, 2}, {pixelRGB24, 3}, {pixelRGB48, 6}, {pixelYUV, 2}};
    for (const auto& [id, width] : widths) EXPECT_EQ(PixelWidth(id), width) << GuidToString(id).c_str();
    EXPECT_EQ(PixelDataType(pixelGrayscale), dtUInt16);
    EXPECT_EQ(PixelDataType(pixelRGB), dtRGB24);
    for (SGuid root : {pixelGrayscale, pixelRGB, pixelRGB48, pixelYUV}) {
        EXPECT_TRUE(IsPixelBaseType(root, pixelRoot));
        EXPECT_EQ(PixelBaseType(root), pixelRoot);
    }
    EXPECT_FALSE(IsPixelBaseType(pixelRGB, pixelGrayscale));
    EXPECT_FALSE(IsPixelBaseType(pixelRoot, pixelGrayscale));

    // Codes of the oldest files; anything past 3 is unknown.
    const std::pair<unsigned, SGuid> old[] = {{0, pixelGrayscale}, {1, pixelRGB},  {2, pixelRGB48},
                                              {3, pixelYUV},       {4, SGuid{}}, {0xFFFFFFFFu, SGuid{}}};
    for (const auto& [code, id] : old) EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(code), id) << code;
}

TEST(PixelType, TreeRegistrationAndUnknownTypes)
{
    const SGuid family = MakeGuid("0A000001-0000-4000-8000-000000000001");
    const SGuid camera = MakeGuid("0A000001-0000-4000-8000-000000000002");
    const SGuid variant = MakeGuid("0A000001-0000-4000-8000-000000000003");
    const SGuid unknown = MakeGuid("0A000001-0000-4000-8000-0000000000FF");

    // A derived type may arrive before its base.
    ASSERT_TRUE(RegisterPixelType(variant, "Variant", 2, dtRGB24, camera));
    EXPECT_FALSE(IsPixelBaseType(variant, pixelGrayscale));
    ASSERT_TRUE(RegisterPixelType(camera, "Camera", 2, dtUInt16, family));
    ASSERT_TRUE(RegisterPixelType(family, "Family", 2, dtUInt16, pixelGrayscale));
    // The tree is walked upwards only.
    const std::tuple<SGuid, SGuid, bool> links[] = {{variant, camera, true},    {variant, family, true},
                                                    {variant, pixelGrayscale, true}, {variant, pixelRoot, true},
                                                    {variant, pixelRGB, false}, {family, variant, false}};
    for (const auto& [id, base, derived] : links) EXPECT_EQ(IsPixelBaseType(id, base), derived) << GuidToString(base).c_str();

    // The first registration of an identifier stays.
    EXPECT_FALSE(RegisterPixelType(camera, "Other", 3, dtUInt8, pixelRGB));
    EXPECT_EQ(PixelTypeName(camera), CString("Camera"));
    EXPECT_EQ(PixelWidth(camera), 2);
    EXPECT_EQ(PixelBaseType(camera), family);
    EXPECT_FALSE(RegisterPixelType(SGuid{}, "Empty", 1, dtUInt8, pixelRoot));
    SGuid found;
    ASSERT_TRUE(FindPixelType("Variant", found));
    EXPECT_EQ(found, variant);
    EXPECT_FALSE(FindPixelType("variant", found));

    EXPECT_EQ(PixelWidth(unknown), 0);
    EXPECT_FALSE(IsPixelTypeRegistered(unknown));
    EXPECT_TRUE(PixelTypeName(unknown).empty());
    EXPECT_EQ(PixelDataType(unknown), dtNoData);
    EXPECT_TRUE(PixelBaseType(unknown).isEmpty());
    EXPECT_TRUE(IsPixelBaseType(unknown, unknown));
    EXPECT_FALSE(IsPixelBaseType(unknown, pixelRoot));

    // Links that loop end the walk.
    const SGuid loopA = MakeGuid("0A000002-0000-4000-8000-00000000000A");
    const SGuid loopB = MakeGuid("0A000002-0000-4000-8000-00000000000B");
    const SGuid self = MakeGuid("0A000002-0000-4000-8000-00000000000C");
    ASSERT_TRUE(RegisterPixelType(loopA, "A", 1, dtUInt8, loopB));
    ASSERT_TRUE(RegisterPixelType(loopB, "B", 1, dtUInt8, loopA));
    ASSERT_TRUE(RegisterPixelType(self, "Self", 1, dtUInt8, self));
    EXPECT_TRUE(IsPixelBaseType(loopA, loopB));
    EXPECT_FALSE(IsPixelBaseType(loopA, pixelRoot));
    EXPECT_FALSE(IsPixelBaseType(self, pixelRoot));
}

TEST(PixelType, ConcurrentRegistrationAndLookup)
{
    // Registrations grow the table while other threads walk it.
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r)
        readers.emplace_back([] {
            for (int i = 0; i < 20000; ++i) {
                EXPECT_TRUE(IsPixelBaseType(pixelYUV, pixelRoot));
                EXPECT_EQ(PixelWidth(pixelRGB), 3);
            }
        });
    std::vector<SGuid> ids;
    for (uint32_t i = 0; i < 400; ++i) {
        SGuid id = MakeGuid("0B000000-0000-4000-8000-000000000000");
        id.Data1 += i;
        ids.push_back(id);
    }
    std::vector<std::thread> writers;
    for (int w = 0; w < 2; ++w)
        writers.emplace_back([&, w] {
            for (size_t i = size_t(w); i < ids.size(); i += 2)
                EXPECT_TRUE(RegisterPixelType(ids[i], "T", 4, dtUInt32, i ? ids[i - 1] : pixelGrayscale));
        });
    for (std::thread& t : writers) t.join();
    for (std::thread& t : readers) t.join();
    EXPECT_TRUE(IsPixelBaseType(ids.back(), pixelGrayscale));
    EXPECT_EQ(PixelWidth(ids[123]), 4);
}
