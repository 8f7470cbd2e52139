// Parameters of algorithms that CMS names: GCMParameters (RFC 5084, section 3.2), ECC-CMS-SharedInfo (RFC
// 5753, section 7.2) and PBKDF2-params (RFC 8018, appendix A.2).
#include "message/cms_records.hpp"

using namespace tlx;

namespace {

/// An INTEGER of the type u32, without a sign, that may be absent, and within bounds.
template <typename R>
struct BoundedNumber : NumberField<R, u32, TLX_TAG_INTEGER> {
    using Base = NumberField<R, u32, TLX_TAG_INTEGER>;
    u32 least;
    u32 most;

    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element next;
        Cursor ahead = children;
        const bool present = ahead.next(next) && next.tag == TLX_TAG_INTEGER;
        const bool is_negative = present && !next.contents.empty() && next.contents[0] >= 0x80;
        if (is_negative || Base::read(children, record) != 0) return kFieldFailed;
        return !present || allows(record.*(Base::member)) ? 0 : kFieldFailed;
    }
    void write(Encoder &out, const R &record) const noexcept {
        if (!this->absent(record) && !allows(record.*(Base::member))) return out.fail();
        Base::write(out, record);
    }

  private:
    [[nodiscard]] bool allows(u32 value) const noexcept { return value >= least && value <= most; }
};
template <typename R>
constexpr BoundedNumber<R> within(u32 least, u32 most, NumberField<R, u32, TLX_TAG_INTEGER> number) noexcept {
    return {number, least, most};
}

// GCMParameters ::= SEQUENCE {
//     aes-nonce OCTET STRING, aes-ICVlen AES-GCM-ICVlen DEFAULT 12 }
// AES-GCM-ICVlen ::= INTEGER (12 | 13 | 14 | 15 | 16)
using Gcm = CMS_GCM_PARAM;
constexpr auto kGcm =
    record<Gcm>(between(1, 2), exact<Joined>(&Gcm::nonce), within(12, 16, number(&Gcm::icvLen).or_else(12)));

// ECC-CMS-SharedInfo ::= SEQUENCE {
//     keyInfo AlgorithmIdentifier, entityUInfo [0] EXPLICIT OCTET STRING OPTIONAL,
//     suppPubInfo [2] EXPLICIT OCTET STRING }
using SharedInfo = CMS_ECC_SHARED_INFO;
constexpr auto kSharedInfo =
    record<SharedInfo>(between(2, 3), exact<AlgorithmMember>(&SharedInfo::keyInfo),
                       explicitly<Exact<Joined>>(0, &SharedInfo::entityUInfo),
                       explicitly<Exact<Joined>>(2, &SharedInfo::suppPubInfo).required());

// PBKDF2-params ::= SEQUENCE {
//     salt CHOICE { specified OCTET STRING, otherSource AlgorithmIdentifier },
//     iterationCount INTEGER (1..MAX), keyLength INTEGER (1..MAX) OPTIONAL,
//     prf AlgorithmIdentifier DEFAULT algid-hmacWithSHA1 }
using Pbkdf2 = CMS_PBKDF2_PARAM;
constexpr u32 kMost = 0xFFFFFFFF;
constexpr auto kPbkdf2 = record<Pbkdf2>(
    between(2, 4), exact<Joined>(&Pbkdf2::salt), within(1, kMost, number(&Pbkdf2::iterationCount)),
    within(1, kMost, number(&Pbkdf2::keyLength).or_else(0)), exact_or_absent<AlgorithmMember>(&Pbkdf2::prf));

}  // namespace

TLX_DEFINE_RECORD(CMS_GCM_PARAM, kGcm)
TLX_DEFINE_RECORD(CMS_ECC_SHARED_INFO, kSharedInfo)
TLX_DEFINE_RECORD(CMS_PBKDF2_PARAM, kPbkdf2)
