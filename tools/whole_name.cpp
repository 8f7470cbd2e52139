#include "whole_name.hpp"

#include <algorithm>
#include <vector>

#include "element.hpp"
#include "owned.hpp"

namespace tool {

namespace {

std::vector<uint8_t> wrapped(uint8_t tag, Octets contents) {
    std::vector<uint8_t> element{tag, 0x84};
    for (int shift = 24; shift >= 0; shift -= 8) {
        element.push_back(static_cast<uint8_t>(contents.size() >> shift));
    }
    element.insert(element.end(), contents.begin(), contents.end());
    return element;
}

/// AttributeTypeAndValue as text; empty when it cannot be decoded.
std::string pair_text(Octets pair) {
    const std::vector<uint8_t> name = wrapped(TLX_TAG_SEQUENCE_OCTET, wrapped(TLX_TAG_SET_OCTET, pair));
    const Node node(decodeToDERSequence_n(name.data(), static_cast<uint32_t>(name.size())));
    X509_NAME *decoded = nullptr;
    if (node == nullptr || Seq_to_X509_NAME(node.get(), &decoded) != 0) return "";
    const Owned<X509_NAME, free_X509_NAME> owner(decoded);
    return name_text(decoded);
}

}  // namespace

// RDNSequence ::= SEQUENCE OF RelativeDistinguishedName
// RelativeDistinguishedName ::= SET SIZE (1..MAX) OF AttributeTypeAndValue
std::string whole_name(Octets name) {
    const std::vector<Octets> rdns = children_of(name);
    if (std::ranges::none_of(rdns, [](Octets rdn) { return children_of(rdn).size() > 1; })) return "";
    std::vector<std::string> entries;
    for (const Octets rdn : rdns) {
        std::string entry;
        for (const Octets pair : children_of(rdn)) {
            const std::string text = pair_text(pair);
            if (text.empty()) return "";
            entry += (entry.empty() ? "" : "+") + text;
        }
        entries.push_back(entry);
    }
    std::string all;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        all += (all.empty() ? "" : ",") + *entry;
    }
    return all;
}

}  // namespace tool
