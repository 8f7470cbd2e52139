// Typed reading and writing: each macro passes its arguments where they belong.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <memory>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

struct FreeConstraints {
    void operator()(BASIC_CONSTRAINTS *record) const { free_BASIC_CONSTRAINTS(record); }
};
using Constraints = std::unique_ptr<BASIC_CONSTRAINTS, FreeConstraints>;

const Octets kDer = hex("30 03 01 01 FF");
const std::string kPem = "-----BEGIN SAMPLE-----\nMAMBAf8=\n-----END SAMPLE-----\n";

/// The flag that a reading macro finds; the status when it fails.
template <typename Read>
std::uint32_t flag_of(Read read) {
    BASIC_CONSTRAINTS *record = nullptr;
    const std::uint32_t status = read(&record);
    const Constraints owner(record);
    return status == 0 ? record->cA : status;
}

TEST(Typed, Reads) {
    const LeakCheck leaks;
    const CommandFolder folder;
    const std::string path = folder.path("record");
    const auto size = static_cast<std::uint32_t>(kDer.size());
    const auto length = static_cast<std::uint32_t>(kPem.size());
    const auto read_der = [&](auto out) { return TLX_READ_DER_FILE(BASIC_CONSTRAINTS, out, path.c_str()); };
    const auto read_pem = [&](auto out) { return TLX_READ_PEM_FILE(BASIC_CONSTRAINTS, out, path.c_str()); };
    EXPECT_EQ(flag_of([&](auto out) { return TLX_READ_DER(BASIC_CONSTRAINTS, out, kDer.data(), size); }),
              0xFF);
    EXPECT_EQ(flag_of([&](auto out) { return TLX_READ_PEM(BASIC_CONSTRAINTS, out, kPem.data(), length); }),
              0xFF);
    folder.write("record", std::string(kDer.begin(), kDer.end()));
    EXPECT_EQ(flag_of(read_der), 0xFF);
    EXPECT_EQ(flag_of(read_pem), 0x4E00002B) << "DER is no PEM";
    folder.write("record", kPem);
    EXPECT_EQ(flag_of(read_pem), 0xFF);
    EXPECT_EQ(flag_of(read_der), 0x47230104) << "PEM read as DER is another element";
}

TEST(Typed, Writes) {
    const LeakCheck leaks;
    const CommandFolder folder;
    const std::string path = folder.path("record");
    const Constraints record(new_BASIC_CONSTRAINTS());
    record->cA = 0xFF;
    const BASIC_CONSTRAINTS *object = record.get();

    std::uint8_t *der = nullptr;
    const std::uint32_t size = TLX_WRITE_DER(BASIC_CONSTRAINTS, object, &der);
    EXPECT_EQ(Octets(der, der + size), kDer);
    tlx_free(der);
    char *pem = nullptr;
    EXPECT_EQ(TLX_WRITE_PEM(BASIC_CONSTRAINTS, object, "SAMPLE", &pem), kPem.size());
    EXPECT_EQ(std::string(pem), kPem);
    tlx_free(pem);

    EXPECT_EQ(TLX_WRITE_DER_FILE(BASIC_CONSTRAINTS, object, path.c_str()), kDer.size());
    EXPECT_EQ(folder.read("record"), std::string(kDer.begin(), kDer.end()));
    EXPECT_EQ(TLX_WRITE_PEM_FILE(BASIC_CONSTRAINTS, object, "SAMPLE", path.c_str()), kPem.size());
    EXPECT_EQ(folder.read("record"), kPem);
}

TEST(Typed, Extensions) {
    const LeakCheck leaks;
    const Constraints record(new_BASIC_CONSTRAINTS());
    record->cA = 0xFF;
    X509_EXTENSIONS *extensions = new_X509_EXTENSIONS();
    X509_EXTENSION *extension = TLX_CREATE_EXTENSION(BASIC_CONSTRAINTS, 87, 1, record.get());
    EXPECT_NE(get_X509_EXTENSION_critical(extension), 0);
    EXPECT_EQ(add_X509_EXTENSION(extensions, extension, -1), 0U);
    const auto decode = [&](int row) {
        return [=](auto out) { return TLX_DECODE_EXTENSION(BASIC_CONSTRAINTS, extensions, row, out); };
    };
    EXPECT_EQ(flag_of(decode(87)), 0xFF);
    EXPECT_EQ(flag_of(decode(83)), 0x473F0047) << "no such extension";
    free_X509_EXTENSION(extension);
    free_X509_EXTENSIONS(extensions);
}

}  // namespace
}  // namespace tlx_test
