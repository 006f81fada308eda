#ifndef CVSOA_TESTS_SUPPORT_LOOPBACKLISTENER_HPP
#define CVSOA_TESTS_SUPPORT_LOOPBACKLISTENER_HPP

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

// A server on a loopback port (any free one for 0), to see whether the XML reader ever connects
// to it. It answers every connection at once, from a thread of its own, so that a fetch
// completes (and is counted) rather than leaving the reader waiting. port() is 0 when the port
// cannot be had.
class LoopbackListener {
public:
    explicit LoopbackListener(int port = 0) {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = loopback(port);
        const int yes = 1;
        ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        socklen_t length = sizeof address;
        if (m_socket < 0 ||
            ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(m_socket, 16) != 0 ||
            ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            return;
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~LoopbackListener() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
        if (m_socket >= 0) {
            ::close(m_socket);
        }
    }
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    static sockaddr_in loopback(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        return address;
    }
    int port() const { return m_port; }
    std::string url(const std::string& file) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + "/" + file;
    }
    // The connections since the last call.
    int connections() {
        // A connection made during a parse has been accepted by the time the parse returns;
        // one more round of the server loop makes sure it has been counted.
        const int seen = m_rounds.load();
        while (m_port != 0 && m_rounds.load() < seen + 2) {
            std::this_thread::yield();
        }
        return m_connections.exchange(0);
    }

private:
    void serve() {
        while (!m_stop) {
            pollfd waiting{m_socket, POLLIN, 0};
            if (::poll(&waiting, 1, 10) > 0) {
                const int client = ::accept(m_socket, nullptr, nullptr);
                if (client >= 0) {
                    ++m_connections;
                    const char reply[] =
                        "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<!ENTITY x 'x'>";
                    [[maybe_unused]] const auto sent = ::send(client, reply, sizeof reply - 1, 0);
                    ::close(client);
                }
            }
            ++m_rounds;
        }
    }

    int m_socket = -1;
    int m_port = 0;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_connections{0};
    std::atomic<int> m_rounds{0};
    std::thread m_thread;
};

#endif
