#include "timestamp.hpp"

#include "block_kind.hpp"
#include "describe.hpp"
#include "failure.hpp"
#include "message_pieces.hpp"
#include "record.hpp"
#include "status.hpp"

namespace tool {

namespace {

using DigestUnit = Owned<DIGEST_UNIT, free_DIGEST_UNIT>;

/// The signer whose signature a token is for; 0 for none.
uint32_t number_of_stamped(const CMS_SIGNER_INFOS *signers, const CMS_CONTENT_INFO *token) {
    CMS_TST_INFO *decoded = nullptr;
    (void)decode_CMS_TST_INFO(token, &decoded);
    const Owned<CMS_TST_INFO, free_CMS_TST_INFO> info(decoded);
    for (uint32_t i = 0; info != nullptr && i < get_CMS_SIGNER_INFOS_count(signers); ++i) {
        const CMS_SIGNER_INFO *signer = get_CMS_SIGNER_INFOS_child(signers, static_cast<int32_t>(i));
        const Octets signature = octets_of(signer->signature);
        if (match_CMS_MESSAGE_IMPRINT(info->messageImprint, signature.data(),
                                      static_cast<uint32_t>(signature.size())) == 0) {
            return i + 1;
        }
    }
    return 0;
}

}  // namespace

FileDigest digest_file(const std::string &path, uint32_t digest_id) {
    const auto unit = made<DigestUnit>(new_DIGEST_UNIT());
    must(init_Digest(unit.get(), digest_id));
    Waiting waiting("Reading");
    Source source(path);
    read_pieces(source, waiting, [&unit](Octets octets) {
        must(update_Digest(unit.get(), octets.data(), static_cast<uint32_t>(octets.size())));
    });
    FileDigest digest;
    must(final_Digest(unit.get(), digest.octets.data(), &digest.length));
    return digest;
}

void expect_signed_message(Source &source) {
    if (type_of(source) != TLX_MESSAGE_SIGNED_DATA) throw Failure(source.name() + ": is no signed message");
}

CmsMessage read_signed_message(const std::string &path) {
    Waiting waiting("Reading");
    Source source(path);
    MessageOutline outline(source.name());
    expect_signed_message(source);
    read_message_pieces(source, waiting, [&outline](Octets octets) { outline.take(octets); });
    return CmsMessage(decode_record(source.name(), outline.write().node.get(), Seq_to_CMS_CONTENT_INFO));
}

CMS_SIGNER_INFO *signer_of(const CMS_CONTENT_INFO *message, uint32_t number, const std::string &path) {
    const CMS_SIGNER_INFOS *signers = message->signedData->signerInfos;
    const uint32_t count = get_CMS_SIGNER_INFOS_count(signers);
    if (count == 0) throw Failure(source_of(path) + ": has no signers");
    if (number == 0 && count > 1) {
        throw Failure(source_of(path) + ": has " + std::to_string(count) +
                      " signers; --signer says which one");
    }
    if (number > count) throw Failure(source_of(path) + ": has no signer " + std::to_string(number));
    return get_CMS_SIGNER_INFOS_child(signers, number == 0 ? 0 : static_cast<int32_t>(number - 1));
}

StampedSigner stamped_signer(const CMS_CONTENT_INFO *message, const CMS_CONTENT_INFO *token, uint32_t number,
                             const std::string &path) {
    const CMS_SIGNER_INFOS *signers = message->signedData->signerInfos;
    if (number == 0) number = number_of_stamped(signers, token);
    if (number == 0 && get_CMS_SIGNER_INFOS_count(signers) > 1) {
        throw Failure(source_of(path) + ": the time stamp is for none of its signatures");
    }
    return {signer_of(message, number, path), number == 0 ? 1 : number};
}

CmsMessage load_timestamp_token(const std::string &path) {
    const Input input(path);
    const Block &block = input.blocks().front();
    expect_contents(block);
    CmsMessage token;
    if (kind_of(block) == Kind::kTimestampResponse) {
        const TimestampResponse response(decode_record(block, Seq_to_CMS_TIMESTAMP_RESPONSE));
        token.reset(std::exchange(response->timeStampToken, nullptr));
        if (token == nullptr) throw Failure(block.source + ": is a response without a token");
    } else {
        token.reset(decode_record(block, Seq_to_CMS_CONTENT_INFO));
    }
    if (!is_timestamp_token(token.get())) throw Failure(block.source + ": is no token of a time stamp");
    return token;
}

}  // namespace tool
