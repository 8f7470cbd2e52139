// Programs that tests run, and the POSIX shell for those that are peers.
#pragma once

#include <string>
#include <vector>

namespace tlx_test {

/// A new folder for a test's files.
std::string make_temporary_folder();

/// Runs a program, the first of the arguments, and waits for its end. It reads nothing; its output and its
/// errors go to files. Returns the exit status, -1 when it did not end by itself; one that cannot be started
/// fails the test.
int run_program(const std::vector<std::string> &arguments, const std::string &output,
                const std::string &errors);

/// Runs a command line in a folder and takes what it prints to either stream. Returns the exit status, -1
/// when there is no shell. A Windows program has none but under Wine: there it is the shell of Wine's host,
/// and the paths of the host's files that a Windows program sees, "Z:/...", may stand in the command.
int run_shell(const std::string &folder, const std::string &command, std::string &output);

}  // namespace tlx_test
