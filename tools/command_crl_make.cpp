// tlxpki crl make.
#include <algorithm>
#include <iostream>
#include <unordered_set>

#include "choice.hpp"
#include "commands.hpp"
#include "output.hpp"
#include "revocation.hpp"
#include "status.hpp"
#include "terminal.hpp"
#include "token.hpp"
#include "verify.hpp"

namespace tool {

namespace {

using WrittenTime = Owned<X509_TIME, free_X509_TIME>;
using Extension = Owned<X509_EXTENSION, free_X509_EXTENSION>;

/// Signature algorithms by the digest, for a key of RSA and one of KCDSA.
constexpr Choice kRsaAlgorithms[] = {
    {"sha256", 668}, {"sha384", 669}, {"sha512", 670}, {"sha224", 671}, {"sha1", 65}};
constexpr Choice kKcdsaAlgorithms[] = {{"has160", 783}, {"sha1", 784}};

/// Adds entries to a list, each certificate once.
class Revoker {
  public:
    explicit Revoker(X509_CRL *crl) : crl_(crl), now_(made<Time>(getCurrentGMTime())) {
        // No search can follow once something is added, so that these are looked up beforehand.
        X509_REVOKED *revoked = nullptr;
        for (uint32_t at = 0; next_X509_CRL_revoked(crl, &at, &revoked) == 0;) {
            known_.insert(number_hex(revoked->serialNumber));
            is_indirect_ = is_indirect_ || names_certificate_issuer(revoked);
        }
        free_X509_REVOKED(revoked);
    }

    /// Takes "SERIAL[,REASON[,TIME]]". Throws Failure.
    void revoke(const std::string &text, const std::string &place) {
        try {
            take(text);
        } catch (const Failure &failure) {
            throw Failure(place + ": " + failure.what());
        }
    }

  private:
    void take(const std::string &text) {
        const std::size_t first = std::min(text.find(','), text.size());
        const std::size_t second = std::min(text.find(',', first + 1), text.size());
        const Serial serial = serial_of(text.substr(0, first));
        const std::size_t begin = std::min(first + 1, second);
        const std::string reason = text.substr(begin, second - begin);
        const uint32_t code = reason_of(reason.empty() ? "unspecified" : reason);
        if (code == TLX_CRL_REASON_REMOVE_FROM_CRL) throw Failure("removeFromCRL is what --release writes");
        const ASN1_TIME *time = time_of(text.substr(std::min(second + 1, text.size())));
        if (is_indirect_) throw Failure("the list has entries of several issuers; others cannot be added");
        if (!known_.insert(number_hex(serial.get())).second) {
            throw Failure(number_hex(serial.get()) + " is on the list already");
        }
        const auto entry = made<Revoked>(create_X509_REVOKED(serial.get(), time, code));
        must(add_X509_CRL_revoked(crl_, entry.get()));
    }

    /// Many lines have the same time.
    const ASN1_TIME *time_of(const std::string &text) {
        if (text.empty()) return now_.get();
        if (text != last_text_ || last_ == nullptr) {
            last_ = parse_time(text);
            last_text_ = text;
        }
        if (last_ == nullptr) {
            throw Failure("\"" + text + "\" is no time; write it like 2026-01-31 or 2026-01-31T12:00:00Z");
        }
        return last_.get();
    }

    X509_CRL *crl_;
    bool is_indirect_ = false;
    Time now_;
    Time last_;
    std::string last_text_;
    std::unordered_set<std::string> known_;
};

/// Revokes what the lines of a file say; "#" begins a comment.
void revoke_lines(Revoker &revoker, const std::string &path) {
    const Buffer file = read_octets(path);
    std::string_view rest(reinterpret_cast<const char *>(file.octets().data()), file.octets().size());
    for (std::size_t number = 1; !rest.empty(); ++number) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.front() == '#') continue;
        revoker.revoke(std::string(line), source_of(path) + ", line " + std::to_string(number));
    }
}

/// The list to go on with, or a new one. Throws Failure for one that is not of the issuer.
Crl begin_list(const MakeCrlOptions &options, const X509_CERT *issuer) {
    if (options.from.empty()) return made<Crl>(new_X509_CRL());
    Crl crl = load_crl(options.from);
    if (cmp_X509_NAME(get_X509_CRL_issuer(crl.get()), get_X509_subject(issuer)) != 0 ||
        verify_SIG_X509_CRL(crl.get(), get_X509_SPKI(issuer)) != 0) {
        throw Failure(source_of(options.from) + ": is no list that the issuer has signed");
    }
    return crl;
}

bool is_delta(const X509_CRL *crl) {
    return get_X509_EXTENSION_index_by_OID_index(get_X509_CRL_extensions(crl), TLX_OID_DELTA_CRL_INDICATOR,
                                                 -1) >= 0;
}

using Number = Owned<BIGINT, free_BIGINT>;

Number number_of(uint32_t value) {
    Number number = made<Number>(new_BIGINT());
    must(set_BIGINT_word(number.get(), value));
    return number;
}

/// Makes a delta list of one that is new, or a delta list itself.
void set_base(X509_CRL *crl, const MakeCrlOptions &options) {
    if (options.delta == 0) return;
    if (!options.from.empty() && !is_delta(crl)) {
        throw Failure(source_of(options.from) + ": is a complete list, with which no delta list begins");
    }
    must(set_X509_CRL_number(crl, TLX_OID_DELTA_CRL_INDICATOR, number_of(options.delta).get()));
}

/// The number that is asked for, or the one after the list's, or after that of a delta list's base, or 1.
Number number_for(const MakeCrlOptions &options, const X509_CRL *crl) {
    if (options.number != 0 && options.number <= options.delta) {
        throw Failure("--number: a delta list has a higher number than its base");
    }
    if (options.number != 0) return number_of(options.number);
    BIGINT *last = nullptr;
    const bool is_first = decode_X509_CRL_number(crl, TLX_OID_CRL_NUMBER, &last) != 0;
    const Number before = is_first ? number_of(options.delta) : Number(last);
    Number number = made<Number>(new_BIGINT());
    must(add_BIGINT(number.get(), before.get(), number_of(1).get()));
    return number;
}

/// Names the issuer's key in the list.
void set_authority_key(X509_CRL *crl, const X509_CERT *issuer) {
    const Owned<AUTHORITY_KEYID, free_AUTHORITY_KEYID> key(create_AUTHORITY_KEYID(issuer, TLX_KEYID_KEY));
    if (key == nullptr) throw Failure("the key identifier of the issuer cannot be read");
    const auto extension = made<Extension>(create_X509_EXTENSION_record_by_OID_index(
        nullptr, TLX_OID_AUTHORITY_KEY_IDENTIFIER, 0, key.get(), TLX_ENCODER(AUTHORITY_KEYID_to_Seq)));
    const auto extensions = made<Owned<X509_EXTENSIONS, free_X509_EXTENSIONS>>(
        get_X509_CRL_extensions(crl) != nullptr ? dup_X509_EXTENSIONS(get_X509_CRL_extensions(crl))
                                                : new_X509_EXTENSIONS());
    const int32_t old =
        get_X509_EXTENSION_index_by_OID_index(extensions.get(), TLX_OID_AUTHORITY_KEY_IDENTIFIER, -1);
    free_X509_EXTENSION(remove_X509_EXTENSION(extensions.get(), old));
    must(add_X509_EXTENSION(extensions.get(), extension.get(), old));
    must(set_X509_CRL_extensions(crl, extensions.get()));
}

void set_times(X509_CRL *crl, uint32_t days) {
    const auto now = made<Time>(getCurrentGMTime());
    const auto written = made<WrittenTime>(new_X509_TIME());
    must(set_X509_TIME(written.get(), now.get()));
    must(set_X509_CRL_thisUpdate(crl, written.get()));
    must(add_ASN1_TIME_days(now.get(), static_cast<int32_t>(days)));
    must(set_X509_TIME(written.get(), now.get()));
    must(set_X509_CRL_nextUpdate(crl, written.get()));
}

void set_algorithm(X509_CRL *crl, const ASYMMETRIC_KEY *key, const std::string &digest) {
    const bool is_rsa = key->kind == TLX_KEY_RSA;
    const std::string name = !digest.empty() ? digest : is_rsa ? "sha256" : "has160";
    const std::span<const Choice> algorithms =
        is_rsa ? std::span<const Choice>(kRsaAlgorithms) : kKcdsaAlgorithms;
    const std::vector<std::string> names = names_of(algorithms);
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw Failure("--digest: a key of this kind does not sign with " + name);
    }
    const uint32_t row = value_of(algorithms, name);
    const auto algorithm = made<Oid>(index_to_OBJECT_IDENTIFIER(static_cast<int32_t>(row)));
    must(set_X509_CRL_signature(crl, algorithm.get()));
}

void write_crl(const std::string &path, const X509_CRL *crl, bool as_der) {
    constexpr uint32_t kFailed = 0xFFFFFFFF;
    uint8_t *octets = nullptr;
    char *text = nullptr;
    const uint32_t size =
        as_der ? TLX_WRITE_DER(X509_CRL, crl, &octets) : TLX_WRITE_PEM(X509_CRL, crl, "X509 CRL", &text);
    const Owned<uint8_t, tlx_free> owned_octets(octets);
    const Text owned_text(text);
    if (size == kFailed) throw Failure(path + ": the list cannot be encoded");
    write_octets(path, {as_der ? octets : reinterpret_cast<const uint8_t *>(text), size});
}

}  // namespace

int run_crl_make(const MakeCrlOptions &options) {
    expect_room_for_json(options.json, options.output);
    Password password(options.password_file);
    Tokens tokens(options.pin_file);
    const Certificate issuer = load_certificate(options.issuer, tokens).cert;
    const Key key = load_private_key(options.key, password, tokens, KeyUse::kSign);
    Crl crl = begin_list(options, issuer.get());
    set_base(crl.get(), options);
    {
        const Waiting waiting("Revoking");
        if (!options.release.empty()) crl = release(crl.get(), options.release, is_delta(crl.get()));
        Revoker revoker(crl.get());
        for (const std::string &text : options.revoke) {
            revoker.revoke(text, "--revoke");
        }
        if (!options.revoke_file.empty()) revoke_lines(revoker, options.revoke_file);
    }
    must(set_X509_CRL_version(crl.get(), 1));
    must(set_X509_CRL_issuer(crl.get(), get_X509_subject(issuer.get())));
    set_times(crl.get(), options.days);
    set_authority_key(crl.get(), issuer.get());
    must(set_X509_CRL_number(crl.get(), TLX_OID_CRL_NUMBER, number_for(options, crl.get()).get()));
    set_algorithm(crl.get(), key.get(), options.digest);
    const uint32_t status = gen_SIG_X509_CRL(crl.get(), key.get());
    if (status > TLX_RSA_BAD_KEY)
        throw Failure("the list cannot be signed: " + exact_status_sentence(status));
    if (status != 0 || verify_SIG_X509_CRL(crl.get(), get_X509_SPKI(issuer.get())) != 0) {
        throw Failure(options.key + ": is not the key of " + options.issuer);
    }
    write_crl(options.output, crl.get(), options.der);
    if (options.json) {
        Json document = {{"output", options.output}};
        document.update(describe_crl(crl.get(), kShownEntries));
        print_json(std::cout, document);
    }
    return kGood;
}

}  // namespace tool
