// AlgorithmIdentifiers whose two members stand in other records.
#pragma once

#include "der/record.hpp"

namespace tlx {

/// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY DEFINED BY algorithm
/// OPTIONAL } Replaces both members. False when the algorithm is missing, anything follows the parameters, or
/// memory runs out; the members stay then.
[[nodiscard]] bool decode_algorithm(const Element &sequence, OBJECT_IDENTIFIER *&algorithm,
                                    ASN1_UNIT *&parameters) noexcept;
void encode_algorithm(Encoder &out, const OBJECT_IDENTIFIER *algorithm, const ASN1_UNIT *parameters,
                      u8 tag = kSequence) noexcept;

}  // namespace tlx
