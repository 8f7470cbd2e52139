// Objects of tokens: finding them, and reading certificates.
#include <tlxpki/asn1_io.h>
#include <tlxpki/ber.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509_name.h>

#include <algorithm>

#include "der/owned.hpp"
#include "keys/token.hpp"

/// An array that ends where its count says.
struct TOKEN_OBJECTS {
    tlx::u32 count;
    tlx::u32 room;
    TOKEN_OBJECT *objects;
};

TLX_OWNS(TOKEN_OBJECTS);

namespace tlx {

namespace {

constexpr std::size_t kMostObjects = 10000;

}  // namespace

CK_RV AttributeValue::read(const TOKEN_SESSION &session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                           std::size_t most) noexcept {
    CK_ATTRIBUTE wanted = {type, nullptr, 0};
    CK_RV result = call<&CK_FUNCTION_LIST::C_GetAttributeValue>(session, object, &wanted, CK_ULONG{1});
    if (result != CKR_OK) return result;
    const CK_ULONG size = wanted.ulValueLen;
    if (size == CK_UNAVAILABLE_INFORMATION) return CKR_ATTRIBUTE_TYPE_INVALID;
    if (size > most) return kTooLong;
    tlx_free(std::exchange(octets_, static_cast<u8 *>(TLX_ALLOCATE(std::size_t{size} + 1))));
    size_ = 0;
    if (octets_ == nullptr) return CKR_HOST_MEMORY;
    wanted = {type, octets_, size};
    result = call<&CK_FUNCTION_LIST::C_GetAttributeValue>(session, object, &wanted, CK_ULONG{1});
    if (result != CKR_OK) return result;
    if (wanted.ulValueLen > size) return kTooLong;
    size_ = wanted.ulValueLen;
    octets_[size_] = 0;
    return CKR_OK;
}

bool FoundHandles::grow() noexcept {
    const std::size_t room = room_ == 0 ? 16 : 2 * room_;
    auto *grown = static_cast<CK_OBJECT_HANDLE *>(TLX_ALLOCATE(room * sizeof(CK_OBJECT_HANDLE)));
    if (grown == nullptr) return false;
    std::copy_n(handles_, count_, grown);
    // A module may claim more than it writes.
    std::fill_n(grown + count_, room - count_, CK_INVALID_HANDLE);
    tlx_free(std::exchange(handles_, grown));
    room_ = room;
    return true;
}

CK_RV FoundHandles::take_all(const TOKEN_SESSION &session) noexcept {
    for (;;) {
        if (count_ == room_ && !grow()) return CKR_HOST_MEMORY;
        const auto room = static_cast<CK_ULONG>(room_ - count_);
        CK_ULONG more = 0;
        const CK_RV result = call<&CK_FUNCTION_LIST::C_FindObjects>(session, handles_ + count_, room, &more);
        if (result != CKR_OK || more == 0) return result;
        count_ += std::min(more, room);
        if (more > room || count_ > kMostObjects) return AttributeValue::kTooLong;
    }
}

CK_RV FoundHandles::find(const TOKEN_SESSION &session, std::span<CK_ATTRIBUTE> attributes) noexcept {
    count_ = 0;
    const CK_RV begun = call<&CK_FUNCTION_LIST::C_FindObjectsInit>(session, attributes.data(),
                                                                   static_cast<CK_ULONG>(attributes.size()));
    if (begun != CKR_OK) return begun;
    const CK_RV result = take_all(session);
    const CK_RV ended = call<&CK_FUNCTION_LIST::C_FindObjectsFinal>(session);
    return result != CKR_OK ? result : ended;
}

}  // namespace tlx

using namespace tlx;

namespace {

constexpr std::size_t kMostTextOctets = 65536;
constexpr std::size_t kMostCertificateOctets = std::size_t{1024} * 1024;

u32 find_status(CK_RV result) noexcept {
    if (result == AttributeValue::kTooLong) return 0x491C001C;
    return result == CKR_HOST_MEMORY ? 0x491C003C : status_of(result);
}

CK_OBJECT_CLASS class_of(u32 kind) noexcept {
    if (kind == TLX_TOKEN_CERTIFICATE) return CKO_CERTIFICATE;
    return kind == TLX_TOKEN_PRIVATE_KEY ? CKO_PRIVATE_KEY : CKO_PUBLIC_KEY;
}

/// What a query asks for, with room for the class of the objects first.
class Template {
  public:
    /// False when the name cannot be encoded.
    [[nodiscard]] bool fill(const TOKEN_OBJECT_QUERY *query) noexcept {
        if (query == nullptr) return true;
        if (query->label != nullptr) add(CKA_LABEL, query->label, std::strlen(query->label));
        if (query->id != nullptr) add(CKA_ID, query->id, query->idLength);
        if (query->subject == nullptr) return true;
        u8 *name = nullptr;
        const u32 size = writeDER_to_Binary(query->subject, TLX_ENCODER(X509_NAME_to_Seq), &name);
        if (size == 0xFFFFFFFF) return false;
        name_.reset(name);
        add(CKA_SUBJECT, name, size);
        return true;
    }
    [[nodiscard]] std::span<CK_ATTRIBUTE> of_class(const CK_OBJECT_CLASS &object_class) noexcept {
        attributes_[0] = attribute(CKA_CLASS, &object_class, sizeof object_class);
        return {attributes_, count_};
    }

  private:
    void add(CK_ATTRIBUTE_TYPE type, const void *value, std::size_t size) noexcept {
        attributes_[count_++] = attribute(type, value, size);
    }

    CK_ATTRIBUTE attributes_[4];
    std::size_t count_ = 1;
    OwnedOctets<u8> name_;
};

/// Reads an attribute that an object may lack.
CK_RV read_optional(const TOKEN_SESSION &session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                    AttributeValue &value) noexcept {
    const CK_RV result = value.read(session, object, type, kMostTextOctets);
    const bool lacks = result == CKR_ATTRIBUTE_TYPE_INVALID || result == CKR_ATTRIBUTE_SENSITIVE;
    return lacks ? CKR_OK : result;
}

u32 describe(const TOKEN_SESSION &session, CK_OBJECT_HANDLE handle, u32 kind, TOKEN_OBJECT &object) noexcept {
    AttributeValue label;
    AttributeValue id;
    CK_RV result = read_optional(session, handle, CKA_LABEL, label);
    if (result == CKR_OK) result = read_optional(session, handle, CKA_ID, id);
    if (result != CKR_OK) return find_status(result);
    u8 *text = copy_terminated(label.bytes());
    if (text == nullptr) return 0x491C003C;
    const auto id_length = static_cast<u32>(id.bytes().size());
    object = {handle, kind, reinterpret_cast<char *>(text), id_length == 0 ? nullptr : id.release(),
              id_length};
    return 0;
}

bool make_room(TOKEN_OBJECTS &list, std::size_t more) noexcept {
    const std::size_t room = list.count + more;
    auto *grown = static_cast<TOKEN_OBJECT *>(TLX_ALLOCATE((room + 1) * sizeof(TOKEN_OBJECT)));
    if (grown == nullptr) return false;
    std::copy_n(list.objects, list.count, grown);
    tlx_free(std::exchange(list.objects, grown));
    list.room = static_cast<u32>(room);
    return true;
}

u32 add_kind(const TOKEN_SESSION &session, u32 kind, Template &wanted, TOKEN_OBJECTS &list) noexcept {
    const CK_OBJECT_CLASS object_class = class_of(kind);
    FoundHandles found;
    const CK_RV result = found.find(session, wanted.of_class(object_class));
    if (result != CKR_OK) return find_status(result);
    if (!make_room(list, found.get().size())) return 0x491C003C;
    for (const CK_OBJECT_HANDLE handle : found.get()) {
        const u32 status = describe(session, handle, kind, list.objects[list.count]);
        if (status != 0) return status;
        ++list.count;
    }
    return 0;
}

}  // namespace

uint32_t find_TOKEN_OBJECTS(TOKEN_SESSION *session, const TOKEN_OBJECT_QUERY *query, TOKEN_OBJECTS **out) {
    if (session == nullptr || out == nullptr) return 0x491C0049;
    const u32 only = query == nullptr ? 0 : query->kind;
    if (only > TLX_TOKEN_PUBLIC_KEY) return 0x491C0048;
    Template wanted;
    Owned<TOKEN_OBJECTS> list(TLX_NEW(TOKEN_OBJECTS));
    if (!list || !wanted.fill(query)) return 0x491C003C;
    for (const u32 kind : {TLX_TOKEN_CERTIFICATE, TLX_TOKEN_PRIVATE_KEY, TLX_TOKEN_PUBLIC_KEY}) {
        if (only != 0 && only != kind) continue;
        if (const u32 status = add_kind(*session, kind, wanted, *list); status != 0) return status;
    }
    *out = list.release();
    return 0;
}

void free_TOKEN_OBJECTS(TOKEN_OBJECTS *objects) {
    if (objects == nullptr) return;
    for (u32 i = 0; i < objects->count; ++i) {
        tlx_free(objects->objects[i].label);
        tlx_free(objects->objects[i].id);
    }
    tlx_free(objects->objects);
    tlx_free(objects);
}

uint32_t get_TOKEN_OBJECTS_count(const TOKEN_OBJECTS *objects) {
    return objects == nullptr ? 0 : objects->count;
}

const TOKEN_OBJECT *get_TOKEN_OBJECTS_child(const TOKEN_OBJECTS *objects, int32_t index) {
    const bool there = objects != nullptr && index >= 0 && static_cast<u32>(index) < objects->count;
    return there ? objects->objects + index : nullptr;
}

uint32_t get_TOKEN_certificate(TOKEN_SESSION *session, const TOKEN_OBJECT *object, X509_CERT **cert) {
    if (session == nullptr || object == nullptr || cert == nullptr) return 0x491D0049;
    if (object->kind != TLX_TOKEN_CERTIFICATE) return 0x491D0048;
    AttributeValue value;
    const auto handle = static_cast<CK_OBJECT_HANDLE>(object->handle);
    const CK_RV result = value.read(*session, handle, CKA_VALUE, kMostCertificateOctets);
    if (result == AttributeValue::kTooLong) return 0x491D001C;
    if (result == CKR_HOST_MEMORY) return 0x491D003C;
    if (result != CKR_OK) return status_of(result);
    void *made = nullptr;
    const u32 status = readDER_from_Buffer(&made, TLX_DECODER(Seq_to_X509_CERT), value.bytes().data(),
                                           static_cast<u32>(value.bytes().size()));
    if (status != 0) return status;
    *cert = static_cast<X509_CERT *>(made);
    return 0;
}
