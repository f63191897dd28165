#include "support/HttpsServer.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "support/Files.h"

namespace vireo::test {
namespace {

/// Where it is installed, an ordinary user may have no path to it.
std::string program() {
    return ChildProcess::run({"nginx", "-v"}).exitCode == 0 ? "nginx" : "/usr/sbin/nginx";
}

std::string make(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"openssl"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = ChildProcess::run(command);
    if (outcome.exitCode != 0) {
        throw std::runtime_error("openssl: " + outcome.err);
    }
    return outcome.out;
}

/// Ports that nobody has at the moment.
std::vector<std::string> freePorts(std::size_t count) {
    std::vector<int> sockets;
    std::vector<std::string> ports;
    while (ports.size() < count) {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (::bind(sockets.back(), any, length) != 0 ||
            ::getsockname(sockets.back(), any, &length) != 0) {
            throw std::runtime_error("no free port");
        }
        ports.push_back(std::to_string(ntohs(address.sin_port)));
    }
    for (const int socket : sockets) {
        ::close(socket);
    }
    return ports;
}

}  // namespace

bool HttpsServer::isInstalled() {
    return ChildProcess::run({program(), "-v"}).exitCode == 0 &&
           ChildProcess::run({"openssl", "version"}).exitCode == 0;
}

HttpsServer::HttpsServer(std::string directory)
    : m_directory(std::move(directory)), m_ports(freePorts(ePorts)) {
    makeAuthority("stranger");
    makeAuthority("authority");
    makeCertificate("good", "IP:127.0.0.1", "2");
    makeCertificate("elsewhere", "DNS:other.example", "2");
    makeCertificate("expired", "IP:127.0.0.1", "-1");
    makeCertificate("client", "DNS:phone.example", "2");
    std::ofstream(m_own.file("users")) << "a@b:" << make({"passwd", "-apr1", "p/w:#"});
    start(true);
}

void HttpsServer::makeAuthority(const std::string& name) const {
    make({"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
          "-subj", "/CN=" + name, "-days", "2", "-keyout", m_own.file(name + ".key"), "-out",
          m_own.file(name + ".pem")});
}

void HttpsServer::makeCertificate(const std::string& name, const std::string& subjectName,
                                  const std::string& days) const {
    std::ofstream(m_own.file(name + ".ext")) << "subjectAltName=" << subjectName << '\n';
    make({"req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
          "/CN=" + name, "-keyout", m_own.file(name + ".key"), "-out", m_own.file(name + ".csr")});
    make({"x509", "-req", "-in", m_own.file(name + ".csr"), "-CA", m_own.file("authority.pem"),
          "-CAkey", m_own.file("authority.key"), "-CAcreateserial", "-days", days, "-extfile",
          m_own.file(name + ".ext"), "-out", m_own.file(name + ".pem")});
}

std::string HttpsServer::certificate(const std::string& file) const {
    return readFile(m_own.file(file));
}

std::string HttpsServer::settings(bool isHolding) const {
    const std::string own = m_own.path().string();
    const auto server = [&](ePort which, const std::string& name, const std::string& more) {
        return "server { listen 127.0.0.1:" + m_ports[which] + " ssl; ssl_certificate " + own +
               "/" + name + ".pem; ssl_certificate_key " + own + "/" + name + ".key; " + more +
               "}\n";
    };
    std::string text = "daemon off; master_process off; error_log stderr notice; pid " + own +
                       "/pid;\nevents {}\nhttp {\naccess_log off; root " + m_directory + ";\n";
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
        text += std::string(kind) + "_temp_path " + own + "/temporary;\n";
    }
    text +=
        server(eGood, "good",
               "location /locked/ { auth_basic files; auth_basic_user_file " + own +
                   "/users; }\nlocation /moved/ { rewrite ^/moved/(.*)$ https://127.0.0.1:" +
                   m_ports[eGood] +
                   "/$1 redirect; }\nlocation /away/ { return 302 http://127.0.0.1:1/; }\n" +
                   (isHolding ? "location /held/ { limit_rate_after 3m; limit_rate 1; }\n" : ""));
    text += server(eWrongHost, "elsewhere", "");
    text += server(eExpired, "expired", "");
    text += server(eWantsClient, "good",
                   "ssl_verify_client on; ssl_client_certificate " + own + "/authority.pem; ");
    return text + "}\n";
}

void HttpsServer::start(bool isHolding) {
    std::ofstream(m_own.file("conf")) << settings(isHolding);
    m_process = std::make_unique<ChildProcess>(
        std::vector<std::string>{program(), "-e", "stderr", "-c", m_own.file("conf")});
    // It says so after it has begun to listen.
    std::string said;
    for (std::string line; line.find("RLIMIT_NOFILE") == std::string::npos; said += line + "\n") {
        if (!m_process->readErrorLine(line)) {
            throw std::runtime_error("nginx did not start: " + said);
        }
    }
}

void HttpsServer::restart() {
    kill();
    start(false);
}

}  // namespace vireo::test
