#include "arguments.hpp"

namespace tool {

void add_repeated(CLI::App *command, const char *name, std::vector<std::string> &values,
                  const char *value_name, const char *help) {
    command->add_option(name, values, help)
        ->type_name(value_name)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void add_json(CLI::App *command, bool &json) {
    command->add_flag("--json", json, "Print JSON, for programs");
}

void add_password_file(CLI::App *command, std::string &path) {
    command
        ->add_option("--password-file", path,
                     "File whose first line is the password of an encrypted key; by default it is typed")
        ->type_name("FILE");
}

}  // namespace tool
