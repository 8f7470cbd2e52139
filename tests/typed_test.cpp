// Typed reading and writing: each macro passes its arguments where they belong.

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace {

using namespace tlx_test;

const std::string kDer = "\x30\x03\x01\x01\xFF";
const std::string kPem = "-----BEGIN SAMPLE-----\nMAMBAf8=\n-----END SAMPLE-----\n";

/// The flag of the record that a macro makes; its status when it fails.
template <typename Read>
std::uint32_t flag_of(Read read) {
    BASIC_CONSTRAINTS *record = nullptr;
    const std::uint32_t status = read(&record);
    const Held<free_BASIC_CONSTRAINTS> owner(record);
    return status == 0 ? record->cA : status;
}
#define FLAG_OF(macro, ...) flag_of([&](auto out) { return macro(BASIC_CONSTRAINTS, __VA_ARGS__); })

TEST(Typed, EveryMacro) {
    const LeakCheck leaks;
    const CommandFolder folder;
    const std::string name = folder.path("record");
    const char *path = name.c_str();
    const Held<free_BASIC_CONSTRAINTS> owner(new_BASIC_CONSTRAINTS());
    BASIC_CONSTRAINTS *record = owner.get();
    record->cA = 0xFF;

    std::uint8_t *der = nullptr;
    ASSERT_EQ(TLX_WRITE_DER(BASIC_CONSTRAINTS, record, &der), kDer.size());
    EXPECT_EQ(std::string(der, der + kDer.size()), kDer);
    EXPECT_EQ(FLAG_OF(TLX_READ_DER, out, der, 5), 0xFF);
    EXPECT_EQ(FLAG_OF(TLX_READ_DER, out, der, 4), 0x4300004F);
    char *pem = nullptr;
    ASSERT_EQ(TLX_WRITE_PEM(BASIC_CONSTRAINTS, record, "SAMPLE", &pem), kPem.size());
    EXPECT_EQ(pem, kPem);
    EXPECT_EQ(FLAG_OF(TLX_READ_PEM, out, pem, 54), 0xFF);
    EXPECT_EQ(FLAG_OF(TLX_READ_PEM, out, pem, 24), 0x4E00002B);

    EXPECT_EQ(TLX_WRITE_DER_FILE(BASIC_CONSTRAINTS, record, path), kDer.size());
    EXPECT_EQ(folder.read("record"), kDer);
    EXPECT_EQ(FLAG_OF(TLX_READ_DER_FILE, out, path), 0xFF);
    EXPECT_EQ(FLAG_OF(TLX_READ_PEM_FILE, out, path), 0x4E00002B);
    EXPECT_EQ(TLX_WRITE_PEM_FILE(BASIC_CONSTRAINTS, record, "SAMPLE", path), kPem.size());
    EXPECT_EQ(folder.read("record"), kPem);
    EXPECT_EQ(FLAG_OF(TLX_READ_PEM_FILE, out, path), 0xFF);

    X509_EXTENSIONS *extensions = new_X509_EXTENSIONS();
    X509_EXTENSION *extension = TLX_CREATE_EXTENSION(BASIC_CONSTRAINTS, TLX_OID_BASIC_CONSTRAINTS, 1, record);
    EXPECT_EQ(get_X509_EXTENSION_critical(extension), 1);
    EXPECT_EQ(add_X509_EXTENSION(extensions, extension, -1), 0U);
    EXPECT_EQ(FLAG_OF(TLX_DECODE_EXTENSION, extensions, TLX_OID_BASIC_CONSTRAINTS, out), 0xFF);
    EXPECT_EQ(FLAG_OF(TLX_DECODE_EXTENSION, extensions, TLX_OID_KEY_USAGE, out), 0x473F0047);

    free_X509_EXTENSION(extension);
    free_X509_EXTENSIONS(extensions);
    tlx_free(pem);
    tlx_free(der);
}

}  // namespace
