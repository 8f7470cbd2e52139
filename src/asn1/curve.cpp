// Elliptic curves by name.
#include <tlxpki/ber.h>
#include <tlxpki/curve.h>
#include <tlxpki/objects.h>

#include <cstring>

#include "asn1/curve_list.hpp"
#include "der/owned.hpp"

TLX_OWNS(ECPOINT);
TLX_OWNS(ECURVE);

using namespace tlx;

namespace {

Owned<BIGINT> number_of(const CurveNumber &number) noexcept {
    return Owned<BIGINT>(binary_to_BIGINT(number.octets, number.length));
}

bool fill(ECURVE *curve, const NamedCurve &named) noexcept {
    const Owned<BIGINT> a = number_of(named.a);
    const Owned<BIGINT> b = number_of(named.b);
    const Owned<BIGINT> p = number_of(named.p);
    const Owned<BIGINT> x = number_of(named.base_x);
    const Owned<BIGINT> y = number_of(named.base_y);
    const Owned<BIGINT> order = number_of(named.order);
    const Owned<ECPOINT> base(new_ECPOINT());
    if (!a || !b || !p || !x || !y || !order || !base) return false;
    return set_ECPOINT(base.get(), x.get(), y.get()) == 0 &&
           set_ECURVE_params(curve, named.curve_id, named.name, a.get(), b.get(), p.get(), base.get(),
                             order.get()) == 0;
}

}  // namespace

uint32_t set_ECURVE_from_list(ECURVE **curve, uint32_t oid_index) {
    if (curve == nullptr) return 1;
    for (const NamedCurve &named : kNamedCurves) {
        if (named.oid_index != static_cast<i32>(oid_index)) continue;
        OutRecord<ECURVE> target(curve, new_ECURVE);
        if (!target || !fill(target.get(), named)) return 1;
        target.commit();
        return 0;
    }
    return 1;
}

uint32_t set_ECURVE_from_list_ex(ECURVE **curve, const OBJECT_IDENTIFIER *oid) {
    return set_ECURVE_from_list(curve, index_from_OBJECT_IDENTIFIER(oid));
}

uint32_t get_ECURVE_OID_from_name(OBJECT_IDENTIFIER **oid, const char *name) {
    if (oid == nullptr || name == nullptr) return 1;
    for (const NamedCurve &named : kNamedCurves) {
        if (std::strcmp(named.name, name) != 0) continue;
        OBJECT_IDENTIFIER *found = index_to_OBJECT_IDENTIFIER(named.oid_index);
        if (found == nullptr) return 1;
        free_OBJECT_IDENTIFIER(*oid);
        *oid = found;
        return 0;
    }
    return 1;
}
