#pragma once
// CCorvaneFrameInfoReduceObject: the Corvane family's per-frame record. The
// fields are named by kind and position; whoever fills them gives them
// meaning.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CCorvaneFrameInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{03873FE5-59D8-4BFC-A759-85BBB1B78A48}");
    static constexpr const char* kName = "CorvaneFrameInfo";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CCorvaneFrameInfoReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;

    struct SRecord {
        uint32_t word0;
        uint64_t qwords[2];
        uint16_t shorts[2];
        float values[6];
        uint32_t word1;
        float value6;
        uint8_t bytes7[7];
        uint32_t word2;
        uint8_t bytes11[11];
        uint8_t bytes8[8];
        uint16_t short2;
        uint8_t byte1;
        uint8_t flags3[3];
        uint8_t flags5[5];
    };
    SRecord record;
};

} // namespace orv::reduce
