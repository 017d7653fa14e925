#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orv/Log.h"
#include "reduce/store/Plugins.h"
#include "reduce/store/ReduceObjectArray.h"
#include "reduce/store/ReduceObjectFactory.h"
#include "tests/reduce/store/TestObjects.h"

namespace orv::reduce {
namespace {

using namespace test;

uint32_t ValueOf(const TSharedPtr<IReduceObject>& o) { return o.DynamicCast<CPayloadObject>()->value; }

class ReduceObjectArrayTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(RegisterTestTypes()); }
};

TEST_F(ReduceObjectArrayTest, LookupByPresetPrefersExactMatchThenLastIndependent)
{
    CReduceObjectArray a;
    EXPECT_FALSE(a.GetObjectOfType(kPayloadID, 3, false));
    EXPECT_EQ(a.GetSize(), 0u);

    a.add(Payload(0xFF, 1));
    a.add(Payload(0xFF, 2));
    a.add(Payload(5, 3));
    // No preset 3: the later of the two 0xFF objects.
    EXPECT_EQ(ValueOf(a.GetObjectOfType(kPayloadID, 3, false)), 2u);
    EXPECT_EQ(ValueOf(a.GetObjectOfType(kPayloadID, 5, false)), 3u);
    // -1 matches 0xFF exactly: the first one, at once.
    EXPECT_EQ(ValueOf(a.GetObjectOfType(kPayloadID, -1, false)), 1u);

    // With create the fallback is ignored; the new object keeps the preset.
    TSharedPtr<IReduceObject> created = a.GetObjectOfType(kPayloadID, 3, true);
    ASSERT_TRUE(created);
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(created->preset, 3);
    EXPECT_EQ(a.GetAt(3), created);
    EXPECT_EQ(a.GetObjectOfType(kPayloadID, 3, true), created);
    EXPECT_EQ(a.GetSize(), 4u);

    // An unregistered type cannot be created.
    EXPECT_FALSE(a.GetObjectOfType(kUnknownID, 0, true));
    EXPECT_EQ(a.GetSize(), 4u);
}

TEST_F(ReduceObjectArrayTest, Preset255NeverMatchesExactlyButMinusOneDoes)
{
    CReduceObjectArray a;
    // 255 compares against the stored byte read as signed (-1): each create
    // appends another object.
    TSharedPtr<IReduceObject> first = a.GetObjectOfType(kPayloadID, 255, true);
    TSharedPtr<IReduceObject> second = a.GetObjectOfType(kPayloadID, 255, true);
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(a.GetSize(), 2u);
    EXPECT_EQ(first->preset, 0xFF);
    // Without create, 255 finds the last 0xFF object through the fallback.
    EXPECT_EQ(a.GetObjectOfType(kPayloadID, 255, false), second);

    // A preset byte of 0x80 is -128, not 128.
    CReduceObjectArray c;
    c.add(Payload(0x80, 9));
    EXPECT_FALSE(c.GetObjectOfType(kPayloadID, 128, false));
    EXPECT_EQ(ValueOf(c.GetObjectOfType(kPayloadID, -128, false)), 9u);
}

TEST_F(ReduceObjectArrayTest, LookupByNameIsCaseBlindButCreatesWithExactName)
{
    CReduceObjectArray a;
    a.add(Payload(2, 4));
    EXPECT_EQ(ValueOf(a.GetObjectByName("storetestPAYLOAD", 2, false)), 4u);
    EXPECT_TRUE(a.HasObjectWithName("storetestpayload", false));
    EXPECT_FALSE(a.HasObjectWithName("StoreTest", false));
    EXPECT_FALSE(a.HasObjectWithName(nullptr, false));
    // Creation goes through the factory's exact-case names.
    EXPECT_FALSE(a.GetObjectByName("storetestpayload", 1, true));
    EXPECT_EQ(a.GetSize(), 1u);
    TSharedPtr<IReduceObject> created = a.GetObjectByName("StoreTestPayload", 1, true);
    ASSERT_TRUE(created);
    EXPECT_EQ(created->preset, 1);
    EXPECT_EQ(a.GetSize(), 2u);
}

TEST_F(ReduceObjectArrayTest, RemovalsQueriesAndAccess)
{
    CReduceObjectArray a;
    a.add(Payload(2, 1));
    a.add(Payload(0xFF, 2, false));
    a.add(TSharedPtr<IReduceObject>(new CFailLoadObject));
    a.add(Payload(0xFF, 3));

    EXPECT_FALSE(a.GetAt(a.GetSize()));
    EXPECT_FALSE(a.GetAt(0xFFFFFFFFu));

    EXPECT_TRUE(a.HasObjectOfType(kFailLoadID, false));
    EXPECT_FALSE(a.HasObjectOfType(kFailLoadID, true)); // not valid
    EXPECT_FALSE(a.HasObjectWithName("StoreTestFailLoad", true));

    TArray<SGuid> ids{kUnknownID};
    a.GetTypeIDs(ids, false);
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_EQ(ids[0], kPayloadID);
    EXPECT_EQ(ids[1], kFailLoadID);
    a.GetTypeIDs(ids, true);
    ASSERT_EQ(ids.size(), 1u);
    TArray<CString> names{CString("stale")};
    a.GetNames(names, false);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_STREQ(names[0].c_str(), "StoreTestPayload");
    EXPECT_STREQ(names[1].c_str(), "StoreTestFailLoad");

    // -1 removes only the first 0xFF object; preset 2 stays.
    a.RemoveObjectOfType(kPayloadID, -1);
    ASSERT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(ValueOf(a.GetAt(0)), 1u);
    EXPECT_EQ(ValueOf(a.GetAt(2)), 3u);
    a.RemoveObjectOfType(kPayloadID, 255); // never matches
    a.RemoveObjectOfType(kPayloadID, 4);
    EXPECT_EQ(a.GetSize(), 3u);

    // Three adjacent matches all go; the other type keeps its place.
    CReduceObjectArray b;
    b.add(TSharedPtr<IReduceObject>(new CFailLoadObject));
    for (int i = 0; i < 3; ++i) b.add(Payload(static_cast<uint8_t>(i)));
    b.add(TSharedPtr<IReduceObject>(new CFailLoadObject));
    b.RemoveAllObjectsOfType(kPayloadID);
    ASSERT_EQ(b.GetSize(), 2u);
    EXPECT_EQ(b.GetAt(0)->GetTypeID(), kFailLoadID);
    EXPECT_EQ(b.GetAt(1)->GetTypeID(), kFailLoadID);

    // Reset drops the references and keeps the buffer.
    size_t capacity = b.capacity();
    b.Reset();
    EXPECT_EQ(b.GetSize(), 0u);
    EXPECT_EQ(b.capacity(), capacity);
}

TEST_F(ReduceObjectArrayTest, DuplicateCopiesDeeplyAndSkipsNullCopies)
{
    int live = CPayloadObject::liveCount;
    {
        CReduceObjectArray a;
        a.add(Payload(3, 10));
        a.add(TSharedPtr<IReduceObject>(new CFailLoadObject)); // its Duplicate gives null
        a.add(Payload(0xFF, 11, false));
        a.GetAt(2)->frame = 42;

        CReduceObjectArray target;
        target.add(Payload(1, 99));
        a.Duplicate(target);
        ASSERT_EQ(target.GetSize(), 2u);
        EXPECT_NE(target.GetAt(0), a.GetAt(0));
        EXPECT_EQ(ValueOf(target.GetAt(0)), 10u);
        EXPECT_EQ(target.GetAt(0)->preset, 3);
        EXPECT_EQ(ValueOf(target.GetAt(1)), 11u);
        EXPECT_FALSE(target.GetAt(1)->valid);
        EXPECT_EQ(target.GetAt(1)->frame, 42u);
        target.GetAt(0).DynamicCast<CPayloadObject>()->value = 12;
        EXPECT_EQ(ValueOf(a.GetAt(0)), 10u);

        a.Duplicate(a); // into itself
        EXPECT_EQ(a.GetSize(), 2u);
    }
    // Every object went with its last reference, through the factory's destroy.
    EXPECT_EQ(CPayloadObject::liveCount, live);
}

void CollectLine(const char* line, void* context) { static_cast<std::vector<std::string>*>(context)->push_back(line); }

TEST_F(ReduceObjectArrayTest, FactoryRegistrationAndLookups)
{
    CReduceObjectFactory& f = reduceObjectFactory();

    TArray<CString> before;
    f.GetNames(before);
    std::vector<std::string> lines;
    CLog::Sink old = logger().SetSink(&CollectLine, &lines);
    constexpr SGuid other = MakeGuid("{01234567-89AB-CDEF-0011-223344556677}");
    bool again = f.Register<CPayloadObject>("StoreTestPayload", other);
    logger().SetSink(old, nullptr);
    EXPECT_FALSE(again);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "CReduceObjectFactory::Register: Failed to register StoreTestPayload as id "
                        "{01234567-89AB-CDEF-0011-223344556677}\n");
    TArray<CString> after;
    f.GetNames(after);
    EXPECT_EQ(after.size(), before.size());
    EXPECT_EQ(f.GetTypeIDFromName("StoreTestPayload"), kPayloadID);

    EXPECT_TRUE(f.IsRegistered("StoreTestNoSave"));
    EXPECT_FALSE(f.IsRegistered("storetestnosave"));
    EXPECT_TRUE(f.GetNameFromTypeID(kUnknownID).empty());
    EXPECT_TRUE(f.GetTypeIDFromName("StoreTestUnknown").isEmpty());
    EXPECT_FALSE(f.CreateByTypeID(kUnknownID));

    // An entry's destroy deletes only objects of its own type.
    long index = f.Find("StoreTestPayload");
    ASSERT_GE(index, 0);
    auto destroy = f.entries()[static_cast<size_t>(index)].destroy;
    CFailLoadObject onStack;
    destroy(&onStack); // a failed cast does nothing
    destroy(nullptr);
    int live = CPayloadObject::liveCount;
    destroy(new CPayloadObject);
    EXPECT_EQ(CPayloadObject::liveCount, live);
}

TEST_F(ReduceObjectArrayTest, BaseOperationsAndCalcCRC)
{
    CNoSaveObject base;
    SMemFile m;
    EXPECT_FALSE(base.Load(m.file, 0x10000, 0));
    EXPECT_FALSE(base.Save(m.file, 0));
    unsigned int crc = 0xDEADBEEF;
    unsigned long size = 77;
    EXPECT_FALSE(base.CalcCRC(crc, size, 0));
    EXPECT_EQ(crc, 0xDEADBEEFu); // untouched on failure
    EXPECT_EQ(size, 77ul);

    // The counter sees exactly what a real Save writes.
    CPayloadObject p;
    p.value = 0x01020304;
    p.text = "hello";
    ASSERT_TRUE(p.CalcCRC(crc, size, 16));
    EXPECT_EQ(p.savedFlags, 16u);
    ASSERT_TRUE(p.Save(m.file, 0));
    std::vector<uint8_t> bytes = m.bytes();
    EXPECT_EQ(size, bytes.size());
    EXPECT_EQ(size, 4u + 4u + 5u);
    EXPECT_EQ(crc, CalcCRC32(0, bytes.data(), bytes.size()));
}

} // namespace
} // namespace orv::reduce
