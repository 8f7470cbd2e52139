// The process-wide settings of path validation. They are atomic, because one thread may change them while
// another reads them; a validation reads each once.
#include <tlxpki/cpv.h>

#include <atomic>

namespace {

constexpr int32_t kDefaultLength = 3;
constinit std::atomic<uint32_t> g_any_policy_inhibit{0};
constinit std::atomic<uint32_t> g_explicit_policy{255};
constinit std::atomic<int32_t> g_path_length{kDefaultLength};

}  // namespace

extern "C" {

void get_CPV_SETTINGS(CPV_SETTINGS *settings) {
    if (settings == nullptr) return;
    settings->time = nullptr;
    settings->initial_any_policy_inhibit = get_initial_any_policy_inhibit();
    settings->initial_explicit_policy = get_initial_explicit_policy();
    settings->max_certificatePath_length = get_max_certificatePath_length();
}

uint32_t get_initial_any_policy_inhibit(void) {
    return g_any_policy_inhibit.load();
}

void set_initial_any_policy_inhibit(uint32_t inhibit) {
    g_any_policy_inhibit.store(inhibit);
}

uint32_t get_initial_explicit_policy(void) {
    return g_explicit_policy.load();
}

void set_initial_explicit_policy(uint32_t required) {
    g_explicit_policy.store(required);
}

uint32_t get_initial_policy_mapping_inhibit(void) {
    return 0;
}

void set_initial_policy_mapping_inhibit(uint32_t /*inhibit*/) {}

int32_t get_max_certificatePath_length(void) {
    return g_path_length.load();
}

uint32_t set_max_certificatePath_length(int32_t length) {
    if (length < 1) return 1;
    g_path_length.store(length);
    return 0;
}

}  // extern "C"
