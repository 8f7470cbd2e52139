// tlxpki message show: describes a message.
#include "commands.hpp"
#include "describe_cms.hpp"
#include "describe_message.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "message.hpp"
#include "status.hpp"

namespace tool {

namespace {

/// A message of PKCS #7, or of CMS where PKCS #7 has no such content. The status is that of PKCS #7 when
/// neither can be read, unless only CMS has a content of this type.
Json describe_block(const Block &block) {
    const Node node(decodeToDERSequence_n(block.octets.data(), static_cast<uint32_t>(block.octets.size())));
    P7_CONTENT_INFO *old = nullptr;
    const uint32_t status = Seq_to_P7_CONTENT_INFO(node.get(), &old);
    const Message old_owner(old);
    if (status == 0) return describe_message(old);
    CMS_CONTENT_INFO *info = nullptr;
    const uint32_t cms_status = Seq_to_CMS_CONTENT_INFO(node.get(), &info);
    const Owned<CMS_CONTENT_INFO, free_CMS_CONTENT_INFO> owner(info);
    if (cms_status == 0) return describe_cms(info);
    constexpr uint32_t kNoSuchContent = 1;
    throw Failure(block.source +
                  ": cannot be decoded: " + status_sentence(status == kNoSuchContent ? cms_status : status));
}

}  // namespace

int run_show_message(const ShowMessageOptions &options) {
    const Input input(options.message);
    const Block &block = input.blocks().front();
    expect_contents(block);
    Json json = {{"source", source_of(options.message)}};
    json.update(describe_block(block));
    print_document(json, options.json);
    return kGood;
}

}  // namespace tool
