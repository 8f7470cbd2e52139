// tlxpki ocsp respond --listen, asked by openssl, by the command and by hand.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <chrono>
#include <csignal>
#include <thread>

#include "folder.hpp"
#include "support/utf8_path.hpp"

namespace command_test {
namespace {

/// The command while it listens, for half a minute at most.
class Serving {
  public:
    explicit Serving(const Arguments &arguments) {
        std::vector<char *> texts;
        for (const char *text : {"timeout", "30", TLX_COMMAND, "ocsp", "respond", "--listen"})
            texts.push_back(const_cast<char *>(text));
        for (const std::string &text : arguments)
            texts.push_back(const_cast<char *>(text.c_str()));
        texts.push_back(nullptr);
        posix_spawn_file_actions_t streams;
        posix_spawn_file_actions_init(&streams);
        posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, "listening", O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        EXPECT_EQ(posix_spawnp(&process_, texts[0], &streams, nullptr, texts.data(), environ), 0);
        posix_spawn_file_actions_destroy(&streams);
        const std::string begin = "listening on ";
        std::string line;
        for (int waited = 0; waited < 2000 && !line.ends_with('\n'); ++waited) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            line = tlx_test::read_text("listening");
        }
        EXPECT_TRUE(line.starts_with(begin) && line.ends_with('\n')) << line;
        if (line.size() > begin.size()) place_ = line.substr(begin.size(), line.size() - begin.size() - 1);
    }
    ~Serving() {
        if (process_ != 0) end(SIGTERM);
    }
    Serving(const Serving &) = delete;
    Serving &operator=(const Serving &) = delete;

    /// Address and port.
    [[nodiscard]] const std::string &place() const { return place_; }

    /// The exit status after a signal, -1 when it was killed by it.
    int end(int signal) {
        int status = 0;
        kill(process_, signal);
        EXPECT_EQ(waitpid(process_, &status, 0), process_);
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t process_ = 0;
    std::string place_;
};

class CommandListen : public InFolder {
  protected:
    CommandListen() {
        folder_.run(
            "sh issue.sh authority authority 'basicConstraints = critical, CA:TRUE' 2> issue.log;"
            "for name in 12:good 13:bad; do serial=${name%:*} sh issue.sh ${name#*:} authority 2> issue.log; "
            "done;"
            "openssl ocsp -issuer authority.pem -cert good.pem -no_nonce -reqout request.der");
        folder_.write("table", "0C,good\n0D,revoked,keyCompromise\n");
    }

    static Arguments arguments(const std::string &address) {
        return {address, "--issuer",      "authority.pem", "--responder", "authority.pem",
                "--key", "authority.key", "--table",       "table"};
    }
};

/// What comes back until the server ends the connection; "" when it takes none.
std::string exchange(const char *address, const std::string &place, const std::string &sent) {
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    const timeval limit{10, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(std::stoi(place.substr(place.rfind(':') + 1))));
    inet_pton(AF_INET, address, &to.sin_addr);
    std::string all;
    if (connect(connection, reinterpret_cast<const sockaddr *>(&to), sizeof to) == 0) {
        std::size_t at = 0;
        while (at < sent.size()) {
            const ssize_t size = send(connection, sent.data() + at, sent.size() - at, MSG_NOSIGNAL);
            if (size <= 0) break;
            at += static_cast<std::size_t>(size);
        }
        std::array<char, 4096> part{};
        for (ssize_t size = 1; size > 0;) {
            size = recv(connection, part.data(), part.size(), 0);
            all.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        }
    }
    close(connection);
    return all;
}

std::string post(const std::string &body, const std::string &type = "application/ocsp-request",
                 const std::string &first = "POST /ocsp") {
    return first + " HTTP/1.1\r\nHost: a\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string get(const std::string &path, const std::string &more = "") {
    return "GET /" + path + " HTTP/1.1\r\nHost: a\r\n" + more + "\r\n";
}

/// Percent signs for everything that may stand for something else in a URL.
std::string escaped(const std::string &text) {
    std::string result;
    for (const char c : text) {
        std::array<char, 4> code{};
        std::snprintf(code.data(), code.size(), "%%%02X", static_cast<unsigned>(c));
        result += std::isalnum(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : code.data();
    }
    return result;
}

TEST_F(CommandListen, AnswersThePeersUntilASignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Serving serving(arguments("127.0.0.1:0"));
        const std::string url = "http://" + serving.place();
        const std::string said = folder_.run(
            "openssl ocsp -issuer authority.pem -cert good.pem -cert bad.pem -CAfile authority.pem -url " +
            url + " 2>&1");
        for (const char *part : {"Response verify OK", "good.pem: good", "bad.pem: revoked", "keyCompromise"})
            EXPECT_NE(said.find(part), std::string::npos) << part << "\n" << said;
        const Result bad = run({"ocsp", "check", "--issuer", "authority.pem", "--url", url + "/ocsp",
                                "--require-nonce", "bad.pem"});
        EXPECT_EQ(bad.status, 1) << bad;
        EXPECT_EQ(exchange("127.0.0.2", serving.place(), get("")), "") << "another address";
        const Result second =
            run({"ocsp", "respond", "--listen", serving.place(), "--issuer", "authority.pem", "--responder",
                 "authority.pem", "--key", "authority.key", "--table", "table"});
        EXPECT_EQ(second.status, 2) << second;
        EXPECT_NE(second.errors.find(": cannot be listened on: Address already in use"), std::string::npos)
            << second;
        EXPECT_EQ(serving.end(signal), 0) << signal;
    }
}

TEST_F(CommandListen, TakesRequestsInBothFormsAndNothingElse) {
    const Serving serving(arguments("127.0.0.1:0"));
    const std::string request = read_file("request.der");
    std::string base64 = folder_.run("openssl base64 -A -in request.der");
    for (const std::string &question : {post(request), get(escaped(base64)), get(base64)}) {
        const std::string answer = exchange("127.0.0.1", serving.place(), question);
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 ")) << answer;
        EXPECT_NE(answer.find("\r\nContent-Type: application/ocsp-response\r\n"), std::string::npos)
            << answer;
        folder_.write("answer.der", answer.substr(std::min(answer.find("\r\n\r\n") + 4, answer.size())));
        const Result good =
            run({"ocsp", "check", "--issuer", "authority.pem", "--response", "answer.der", "good.pem"});
        EXPECT_EQ(good.status, 0) << good;
    }

    const std::string malformed("\r\n\r\n\x30\x03\x0A\x01\x01", 9);
    struct Row {
        const char *what;
        std::string sent;
        const char *status;
        std::string end;
    };
    for (const Row &row : {
             Row{"an empty body", post(""), "200", malformed},
             Row{"no request", post("text"), "200", malformed},
             Row{"more than a request", post(request + "0"), "200", malformed},
             Row{"half a request", post(request.substr(0, request.size() / 2)), "200", malformed},
             Row{"nothing", get(""), "200", malformed},
             Row{"no Base64", get("%00%ff%"), "200", malformed},
             Row{"Base64 of no request", get("MAA="), "200", malformed},
             Row{"ranges", get("MAA=", "Range: bytes=0-1,0-1\r\n"), "416", ""},
             Row{"HEAD", "HEAD / HTTP/1.1\r\nHost: a\r\n\r\n", "200", "\r\n\r\n"},
             Row{"another type", post(request, "text/plain"), "415", ""},
             Row{"another method", post(request, "application/ocsp-request", "PUT /"), "405", ""},
             Row{"a long path", get(std::string(9000, 'A')), "414", ""},
             Row{"a long path of a body",
                 post(request, "application/ocsp-request", "POST /" + std::string(300, 'A')), "414", ""},
             Row{"a long body", post(std::string(65537, 'A')), "413", ""},
             Row{"no HTTP", "\x30\x03\x02\x01\x05\r\n\r\n", "400", ""},
         }) {
        const std::string answer = exchange("127.0.0.1", serving.place(), row.sent);
        EXPECT_TRUE(answer.starts_with(std::string("HTTP/1.1 ") + row.status)) << row.what << ": " << answer;
        EXPECT_TRUE(answer.ends_with(row.end)) << row.what << ": " << answer;
    }
}

TEST_F(CommandListen, RefusesWhatIsNoAddress) {
    for (const char *address : {"", "127.0.0.1", ":80", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536",
                                "127.0.0.1:-1", "localhost:80", "::1:80", "[::1]", "[127.0.0.1]:80"}) {
        const Result refused =
            run({"ocsp", "respond", "--listen", address, "--issuer", "authority.pem", "--responder",
                 "authority.pem", "--key", "authority.key", "--table", "table"});
        EXPECT_EQ(refused.status, 2) << refused;
        EXPECT_NE(refused.errors.find(*address == '\0' ? "--listen" : "is no address with a port"),
                  std::string::npos)
            << refused;
    }
    const Result both =
        run({"ocsp", "respond", "--listen", "127.0.0.1:0", "--issuer", "authority.pem", "--responder",
             "authority.pem", "--key", "authority.key", "--table", "table", "request.der"});
    EXPECT_EQ(both.status, 2) << both;
}

}  // namespace
}  // namespace command_test
