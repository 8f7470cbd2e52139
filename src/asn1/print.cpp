// Nodes and strings as text for people.
#include <tlxcrypto/file.h>
#include <tlxpki/asn1.h>
#include <tlxpki/convert.h>
#include <tlxpki/objects.h>
#include <tlxpki/print.h>

#include <cstdio>
#include <string_view>

#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

using std::string_view;

/// Ignores failures of standard output.
void print_text(string_view text) noexcept {
    (void)std::fwrite(text.data(), 1, text.size(), stdout);
}

void print_octets(Bytes octets) noexcept {
    print_hex(octets.data(), static_cast<u32>(octets.size()));
}

/// Octets as "30:03:02".
void print_pairs(Bytes octets) noexcept {
    for (std::size_t i = 0; i < octets.size(); ++i) {
        if (i > 0) print_text(":");
        print_octets(octets.subspan(i, 1));
    }
}

/// A new text of all the pieces, one after the other.
char *join(std::initializer_list<string_view> pieces) noexcept {
    std::size_t size = 0;
    for (const string_view piece : pieces) {
        size += piece.size();
    }
    auto *text = static_cast<char *>(TLX_ALLOCATE(size + 1));
    if (text == nullptr) return nullptr;
    char *at = text;
    for (const string_view piece : pieces) {
        at += piece.copy(at, piece.size());
    }
    *at = '\0';
    return text;
}

char *dump_oid(const OBJECT_IDENTIFIER *oid) noexcept {
    const char *name = ln_from_index(static_cast<i32>(index_from_OBJECT_IDENTIFIER(oid)));
    return join({text_of(oid), " - (", name, ")\n"});
}

char *dump_unsupported(i32 type) noexcept {
    char text[40];
    const int size =
        std::snprintf(text, sizeof text, "Un-Supported Type (%02X)\n", static_cast<unsigned>(type));
    return join({string_view(text, static_cast<std::size_t>(size))});
}

using Conversion = u32 (*)(const ASN1_STRING *string, char **out);

char *dump_converted(const ASN1_STRING *string, Conversion convert) noexcept {
    char *text = nullptr;
    return convert(string, &text) != 0 ? text : nullptr;
}

}  // namespace

void printBERData(const ASN1_UNIT *node) {
    Element element;
    if (!view_node(node, element)) {
        (void)std::fputs("Null Pointer\n", stderr);
        return;
    }
    print_text("[Tag] ");
    print_octets({&element.tag, 1});
    print_text(" | [Length] ");
    print_octets(element.length_octets);
    print_text(" | [Value] ");
    if (element.indefinite) {
        print_pairs(element.contents);
        print_text(" | [EOC] 0000");
    } else {
        print_octets(element.contents);
        print_text("\n");
    }
}

void printDERData(const ASN1_UNIT *node) {
    printBERData(node);
}

char *dump_PCHAR(const char *text, uint32_t len) {
    if (text == nullptr) return nullptr;
    // Callers get one zero octet more than the end of a text takes.
    return join({string_view(text, len), string_view("\0", 1)});
}

void print_PCHAR(const char *text, uint32_t len) {
    if (text == nullptr) return;
    print_text({text, len});
    print_text("\n");
}

char *dump_ASN1STRING(const ASN1_STRING *string) {
    const Bytes octets = octets_of(string);
    if (octets.empty() || string->type == 0) return nullptr;
    switch (string->type) {
        case TLX_TAG_BIT_STRING:
        case TLX_TAG_OCTET_STRING:
            return binary_to_hex(octets.data(), static_cast<u32>(octets.size()));
        case TLX_TAG_OBJECT_IDENTIFIER:
            return dump_oid(string);
        case TLX_TAG_UTF8_STRING:
            return dump_converted(string, utf8ToCP949);
        case TLX_TAG_PRINTABLE_STRING:
        case TLX_TAG_T61_STRING:
        case TLX_TAG_IA5_STRING:
        case TLX_TAG_UTC_TIME:
            return dump_PCHAR(text_of(string).data(), static_cast<u32>(octets.size()));
        case TLX_TAG_BMP_STRING:
            return dump_converted(string, bmpToCP949);
        default:
            return dump_unsupported(string->type);
    }
}

void print_ASN1STRING(const ASN1_STRING *string) {
    const OwnedOctets<char> text(dump_ASN1STRING(string));
    if (text) print_text(text.get());
}
