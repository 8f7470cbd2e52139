// The options of verification by RFC 5280, and the settings that they stand for.
#pragma once

#include <tlxpki/verify.h>

#include <string>
#include <vector>

#include "fetch.hpp"
#include "owned.hpp"

namespace CLI {
class App;
}

namespace tool {

/// Names of the rules.
constexpr char kStrict[] = "strict";
constexpr char kCompatible[] = "compatible";

/// Texts are empty when an option is not given.
struct StrictOptions {
    std::string purpose;
    std::string host;
    std::string address;
    std::string mailbox;
    std::string profile = "current";
    std::string anchor_rules = "all";
    std::string revocation;
    std::vector<std::string> lists;
    std::vector<std::string> responses;
    std::vector<std::string> accepted;
    std::vector<std::string> budget;  ///< NAME=N
    uint32_t least_rsa_bits = 0;
    bool explicit_policy = false;
    bool inhibit_mapping = false;
    bool inhibit_any_policy = false;
    bool system_anchors = false;
    bool fetch = false;
};

/// --rules. Options of one of them alone are in a group of their name.
void add_rules(CLI::App *command, std::string &rules);
/// All options of StrictOptions, in the group of the strict rules.
void add_strict_options(CLI::App *command, StrictOptions &options);
/// Those that signers of messages take, in the group of the strict rules. Their purpose is to sign.
void add_signer_options(CLI::App *command, StrictOptions &options);
/// Those that authorities of time stamps take.
void add_authority_options(CLI::App *command, StrictOptions &options);
/// --profile, for lists of certificates that somebody signed to be trusted. The purpose is to sign.
void add_profile(CLI::App *command, StrictOptions &options);
/// The heading in the help, and thereby the group, of the options that only some rules take.
[[nodiscard]] std::string group_of_rules(const std::string &rules);
/// Throws Failure when an option was given that belongs to the other rules.
void expect_options_of_rules(const CLI::App &command, const std::string &rules);

/// The faults to accept, as add_VERIFY_STORE_certificate() and its kin take them.
[[nodiscard]] uint32_t accepted_faults(const StrictOptions &options);

/// The settings of a verification, with what they point to.
class StrictSettings {
  public:
    /// Policies and time are as --policy and --at give them. Throws Failure. The options have to outlive the
    /// settings.
    StrictSettings(const StrictOptions &options, const std::vector<std::string> &policies,
                   const std::string &time);
    StrictSettings(const StrictSettings &) = delete;
    StrictSettings &operator=(const StrictSettings &) = delete;
    [[nodiscard]] const VERIFY_SETTINGS &get() const { return settings_; }
    /// What the last verifications could not fetch.
    [[nodiscard]] std::vector<std::string> take_warnings() { return fetcher_.take_warnings(); }

  private:
    void set_names(const StrictOptions &options);
    void set_policies(const StrictOptions &options, const std::vector<std::string> &policies);

    Time time_;
    Oids policies_;
    std::vector<uint8_t> address_;
    Fetcher fetcher_;
    VERIFY_SETTINGS settings_{};
};

}  // namespace tool
