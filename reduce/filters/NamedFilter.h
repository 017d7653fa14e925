#pragma once
// TNamedFilter: what every filter the factory knows by name adds to its base.
// Derived names itself and its pixel types:
//   static constexpr const char* kName;       the factory's name for it
//   static constexpr SGuid kPixelTypes[];     the types it claims, in order
// and gets GetName and Register from here.
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

template <class Derived, class Base>
class TNamedFilter : public Base {
public:
    using Base::Base;

    // Enters Derived into filterFactory() for kPixelTypes, then the pixel type
    // rows that name it (RegisterPixelTypeRows); true in every case. Called
    // once, from the built-in filter list.
    static bool Register()
    {
        TArray<SGuid> types;
        for (const SGuid& type : Derived::kPixelTypes) types.add(type);
        filterFactory()->template Register<Derived>(Derived::kName, static_cast<TArray<SGuid>&&>(types));
        RegisterPixelTypeRows(Derived::kName);
        return true;
    }

    const char* GetName() const override { return Derived::kName; }
};

} // namespace orv::reduce
