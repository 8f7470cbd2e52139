#include <tlxpki.h>

#include <cstdint>
#include <cstdio>
#include <memory>

int main() {
    const std::unique_ptr<ASN1_UNIT, decltype(&free_ASN1_UNIT)> node(new_ASN1_UNIT(), free_ASN1_UNIT);
    std::uint8_t yes = 1;
    const bool good = encodeToDER(node.get(), TLX_TAG_BOOLEAN, &yes, 1) == 0 && node->value[0] == 0xFF;
    std::printf("C++ program over tlxpki %s: %s\n", get_PkiVersion(), good ? "good" : "wrong");
    return good ? 0 : 1;
}
