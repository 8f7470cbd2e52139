// TBSCertificate (RFC 5280, section 4.1.2).
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include "x509/codecs.hpp"

using namespace tlx;

namespace {

constexpr u32 kLeastChildren = 6;
constexpr u8 kVersionTag = context(0);
constexpr u8 kExtensionsNumber = 3;

/// Walks the children of the to-be-signed part, counting them.
class Members {
  public:
    explicit Members(const Element &sequence) noexcept
        : rest_(sequence), count_(count_children(sequence.contents)) {}

    [[nodiscard]] u32 count() const noexcept { return count_; }
    [[nodiscard]] bool next_is(u8 tag) const noexcept { return !rest_.at_end() && rest_.peek_tag() == tag; }
    [[nodiscard]] bool next(u32 expected, Element &element) noexcept {
        ++position_;
        return rest_.next(expected, element);
    }
    [[nodiscard]] bool next(Element &element) noexcept {
        ++position_;
        return rest_.next(element);
    }
    /// End-of-contents octets after the last child are no child.
    [[nodiscard]] bool at_end() const noexcept {
        return rest_.at_end() || (position_ >= count_ && rest_.peek_tag() == 0);
    }

  private:
    Cursor rest_;
    u32 count_;
    u32 position_ = 0;
};

// version [0] EXPLICIT INTEGER DEFAULT v1
bool decode_version(Members &members, u8 &version) noexcept {
    if (!members.next_is(kVersionTag)) return true;
    Element wrapper;
    Element number;
    if (!members.next(wrapper) || !Cursor(wrapper).next(TLX_TAG_INTEGER, number)) return false;
    if (number.contents.size() > 1) return false;
    version = number.contents.empty() ? 0 : number.contents[0];
    return true;
}

// signature AlgorithmIdentifier, of which only the algorithm is kept
bool decode_signature(Members &members, OBJECT_IDENTIFIER *&algorithm) noexcept {
    Element sequence;
    Element oid;
    if (!members.next(TLX_TAG_SEQUENCE, sequence)) return false;
    if (!Cursor(sequence).next(TLX_TAG_OBJECT_IDENTIFIER, oid)) return false;
    algorithm = decode_oid(oid.contents);
    return algorithm != nullptr;
}

/// A mandatory member of a kind.
template <typename Kind>
bool decode_member(Members &members, typename Kind::type *&member) noexcept {
    Element element;
    return members.next(Kind::tag, element) && Kind::decode(element, &member) == 0;
}

// extensions [3] EXPLICIT Extensions OPTIONAL. Whatever else comes first after the public key is refused:
// issuerUniqueID [1] and subjectUniqueID [2] are. What comes later is not looked at.
bool decode_extensions(Members &members, X509_EXTENSIONS *&extensions) noexcept {
    if (members.at_end()) return true;
    Element wrapper;
    Element sequence;
    if (!members.next(wrapper) || !wrapper.context_specific() || (wrapper.tag & 0x0F) != kExtensionsNumber) {
        return false;
    }
    return Cursor(wrapper).next(TLX_TAG_SEQUENCE, sequence) && Extensions::decode(sequence, &extensions) == 0;
}

// TBSCertificate ::= SEQUENCE {
//     version         [0] EXPLICIT INTEGER DEFAULT v1, serialNumber INTEGER, signature AlgorithmIdentifier,
//     issuer          Name, validity Validity, subject Name, subjectPublicKeyInfo SubjectPublicKeyInfo,
//     issuerUniqueID  [1] IMPLICIT BIT STRING OPTIONAL, subjectUniqueID [2] IMPLICIT BIT STRING OPTIONAL,
//     extensions      [3] EXPLICIT Extensions OPTIONAL }
/// Fills a record without members.
u32 decode_tbs(const Element &element, X509_TBS_CERT &tbs) noexcept {
    Members members(element);
    if (members.count() < kLeastChildren) return 0x4611002B;
    const bool complete =
        decode_version(members, tbs.version) && decode_member<Integer>(members, tbs.serialNumber) &&
        decode_signature(members, tbs.signature) && decode_member<Name>(members, tbs.issuer) &&
        decode_member<Nested<X509_VALIDITY>>(members, tbs.validity) &&
        decode_member<Name>(members, tbs.subject) &&
        decode_member<Nested<X509_PUBKEY>>(members, tbs.subjectPublicKeyInfo) &&
        decode_extensions(members, tbs.extensions);
    return complete ? 0 : 0x46110104;
}

/// Status of the first missing member, in the order in which callers are told.
u32 find_missing_member(const X509_TBS_CERT *tbs) noexcept {
    if (tbs == nullptr) return 0x46120049;
    if (tbs->serialNumber == nullptr) return 0x4612010A;
    if (text_of(tbs->signature).empty()) return 0x46120108;
    if (tbs->issuer == nullptr) return 0x46120105;
    if (tbs->validity == nullptr) return 0x46120107;
    if (tbs->subject == nullptr) return 0x46120106;
    if (tbs->subjectPublicKeyInfo == nullptr) return 0x46120109;
    return 0;
}

}  // namespace

u32 tlx::encode_tbs(Encoder &out, const X509_TBS_CERT *tbs) noexcept {
    if (const u32 status = find_missing_member(tbs); status != 0) return status;
    {
        const auto sequence = out.sequence();
        if (tbs->version > 0) {
            const auto wrapper = out.nest(kVersionTag);
            out.primitive(TLX_TAG_INTEGER, {&tbs->version, 1});
        }
        out.integer(tbs->serialNumber);
        encode_signature_algorithm(out, tbs->signature);
        Name::encode(out, tbs->issuer);
        Codec<X509_VALIDITY>::encode(out, tbs->validity);
        Name::encode(out, tbs->subject);
        Codec<X509_PUBKEY>::encode(out, tbs->subjectPublicKeyInfo);
        if (tbs->extensions != nullptr) {
            const auto wrapper = out.nest(context(kExtensionsNumber));
            Extensions::encode(out, tbs->extensions, Extensions::tag);
        }
    }
    return out.ok() ? 0 : 0x46120103;
}

// A record of the caller's does not outlive a failure: it is freed, and *out is null then.
u32 Codec<X509_TBS_CERT>::decode(const Element &element, X509_TBS_CERT **out) noexcept {
    if (*out == nullptr) *out = new_X509_TBS_CERT();
    if (*out == nullptr) return 0x46110104;
    clean_X509_TBS_CERT(*out);
    const u32 status = decode_tbs(element, **out);
    if (status != 0) {
        free_X509_TBS_CERT(*out);
        *out = nullptr;
    }
    return status;
}

void Codec<X509_TBS_CERT>::encode(Encoder &out, const X509_TBS_CERT *record, u8 /*tag*/) noexcept {
    if (encode_tbs(out, record) != 0) out.fail();
}

X509_TBS_CERT *new_X509_TBS_CERT(void) {
    return TLX_NEW(X509_TBS_CERT);
}

void clean_X509_TBS_CERT(X509_TBS_CERT *tbs) {
    if (tbs == nullptr) return;
    free_BIGINT(tbs->serialNumber);
    free_OBJECT_IDENTIFIER(tbs->signature);
    free_X509_NAME(tbs->issuer);
    free_X509_VALIDITY(tbs->validity);
    free_X509_NAME(tbs->subject);
    free_X509_PUBKEY(tbs->subjectPublicKeyInfo);
    free_BIT_STRING(tbs->issuerUniqueID);
    free_BIT_STRING(tbs->subjectUniqueID);
    free_X509_EXTENSIONS(tbs->extensions);
    *tbs = {};
}

void free_X509_TBS_CERT(X509_TBS_CERT *tbs) {
    clean_X509_TBS_CERT(tbs);
    tlx_free(tbs);
}

X509_TBS_CERT *dup_X509_TBS_CERT(const X509_TBS_CERT *tbs) {
    if (tbs == nullptr) return nullptr;
    Owned<X509_TBS_CERT> copy(new_X509_TBS_CERT());
    if (!copy) return nullptr;
    bool complete = true;
    const auto copy_member = [&complete](auto *&to, auto *from, auto dup) {
        to = dup(from);
        complete = complete && (to == nullptr) == (from == nullptr);
    };
    copy->version = tbs->version;
    copy_member(copy->serialNumber, tbs->serialNumber, dup_BIGINT);
    copy_member(copy->signature, tbs->signature, dup_OBJECT_IDENTIFIER);
    copy_member(copy->issuer, tbs->issuer, dup_X509_NAME);
    copy_member(copy->validity, tbs->validity, dup_X509_VALIDITY);
    copy_member(copy->subject, tbs->subject, dup_X509_NAME);
    copy_member(copy->subjectPublicKeyInfo, tbs->subjectPublicKeyInfo, dup_X509_PUBKEY);
    copy_member(copy->issuerUniqueID, tbs->issuerUniqueID, dup_ASN1_STRING);
    copy_member(copy->subjectUniqueID, tbs->subjectUniqueID, dup_ASN1_STRING);
    copy_member(copy->extensions, tbs->extensions, dup_X509_EXTENSIONS);
    return complete ? copy.release() : nullptr;
}

uint32_t Seq_to_X509_TBS_CERT(const ASN1_UNIT *node, X509_TBS_CERT **out) {
    return decode_node(node, out, statuses(0x46110000));
}

uint32_t X509_TBS_CERT_to_Seq(const X509_TBS_CERT *tbs, ASN1_UNIT **out) {
    if (tbs == nullptr || out == nullptr) return 0x46120049;
    Encoder encoder;
    if (const u32 status = encode_tbs(encoder, tbs); status != 0) return status;
    return hand_over(encoder, out) ? 0 : 0x46120103;
}
