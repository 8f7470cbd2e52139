#include "arguments.hpp"

namespace tool {

void add_repeated(CLI::App *command, const char *name, std::vector<std::string> &values,
                  const char *value_name, const char *help) {
    command->add_option(name, values, help)
        ->type_name(value_name)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option *add_file(CLI::App *command, const char *name, std::string &path, const char *help) {
    return command->add_option(name, path, help)->type_name("FILE");
}

CLI::Option *add_choice(CLI::App *command, const char *name, std::string &value,
                        const std::vector<std::string> &names, const char *help) {
    return command->add_option(name, value, help)->type_name("NAME")->check(CLI::IsMember(names));
}

void add_operand(CLI::App *command, const char *name, std::string &path, const char *help) {
    command->add_option(name, path, help)->type_name("")->required();
}

void add_json(CLI::App *command, bool &json) {
    command->add_flag("--json", json, "Print JSON, for programs");
}

void add_password_file(CLI::App *command, std::string &path) {
    add_file(command, "--password-file", path,
             "File whose first line is the password of an encrypted key; by default it is typed");
}

void add_new_file(CLI::App *command, std::string &new_password_file, bool &force, std::string &output,
                  const char *help) {
    add_file(command, "--new-password-file", new_password_file,
             "File whose first line is the password to encrypt with");
    command->add_flag("--force", force, "Replace a file that exists");
    add_file(command, "-o,--output", output, help)->required();
}

}  // namespace tool
