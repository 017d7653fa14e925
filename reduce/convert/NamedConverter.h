#pragma once
// TNamedConverter: what every converter the factory knows by name adds to its
// base. Derived names itself and says what it offers:
//   static constexpr const char* kName;     the factory's name for it
//   static constexpr SGuid classID;         its identifier
//   static bool SupportedUnits(TArray<EUnit>&, EUnit, CReduceObjectArray&);
// and gets name, id and Register from here.
#include "reduce/convert/ConverterFactory.h"

namespace orv::reduce {

template <class Derived, class Base>
class TNamedConverter : public Base {
public:
    using Base::Base;

    // Enters Derived into converterFactory(); false when the name is taken.
    // Called once, from the built-in converter list.
    static bool Register()
    {
        return converterFactory()->Register(Derived::kName, Derived::classID, &Derived::SupportedUnits,
                                            &TConverterCreator<Derived>::Create,
                                            &TConverterCreator<Derived>::Destroy);
    }

    CString name() override { return Derived::kName; }
    SGuid id() override { return Derived::classID; }
};

} // namespace orv::reduce
