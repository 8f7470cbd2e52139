#include "peer_bench_objects.hpp"

#include <openssl/objects.h>

namespace peer {

int number_of_dotted(const char *text) {
    ASN1_OBJECT *object = OBJ_txt2obj(text, 1);
    const int number = OBJ_obj2nid(object);
    ASN1_OBJECT_free(object);
    return number;
}

int number_of_short_name(const char *text) {
    return OBJ_sn2nid(text);
}
int number_of_long_name(const char *text) {
    return OBJ_ln2nid(text);
}

}  // namespace peer
