// The record of an enveloped, encrypted, authenticated or digested message that is written in pieces.
#pragma once

#include "message/cms_records.hpp"
#include "message/message_kind.hpp"

namespace tlx {

using RecipientList = std::unique_ptr<CMS_RECIPIENT_INFOS, FreeWith<free_CMS_RECIPIENT_INFOS>>;

/// What the record takes over.
struct EnvelopeParts {
    Owned<X509_ALGO_IDENTIFIER> algorithm;  ///< of the cipher, the code or the digest
    Owned<X509_ALGO_IDENTIFIER> digest;     ///< of authenticated data with attributes
    RecipientList recipients;
    u32 code_length = 0;    ///< of the code or the digest
    u32 digest_length = 0;  ///< of authenticated data with attributes
};

/// A message without content, with zeros for codes and digests; null when memory runs out.
[[nodiscard]] Owned<CMS_CONTENT_INFO> make_envelope(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings,
                                                    EnvelopeParts parts) noexcept;

/// Whether a message has attributes that are authenticated.
[[nodiscard]] bool has_authenticated_attributes(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) noexcept;
/// Those of a record; null when it has none.
[[nodiscard]] X509_ATTRIBUTES *authenticated_attributes(const CMS_CONTENT_INFO &info) noexcept;

/// Replaces the zeros of a code, or of the digest of digested data. False when memory runs out.
[[nodiscard]] bool put_code(CMS_CONTENT_INFO &info, Bytes code) noexcept;
/// Replaces the digest in the attributes of authenticated data. False when memory runs out.
[[nodiscard]] bool put_digest(CMS_CONTENT_INFO &info, Bytes digest) noexcept;

}  // namespace tlx
