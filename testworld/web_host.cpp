#include "testworld/web_host.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/evp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "testworld/wire.h"

namespace testworld {

namespace {

std::string percent_decode(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hex_value(text[i + 1]) >= 0 && hex_value(text[i + 2]) >= 0) {
            out += static_cast<char>(hex_value(text[i + 1]) * 16 + hex_value(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

bool send_all(int connection, const char* data, size_t count) {
    while (count > 0) {
        const ssize_t sent = send(connection, data, count, MSG_NOSIGNAL);
        if (sent <= 0) return false;
        data += sent;
        count -= static_cast<size_t>(sent);
    }
    return true;
}

bool send_text(int connection, const std::string& text) { return send_all(connection, text.data(), text.size()); }

// A name that stays inside the folder: no "..", no empty or "." parts.
bool is_safe_name(const std::string& name) {
    if (name.empty() || name[0] == '/') return false;
    size_t start = 0;
    for (;;) {
        const size_t end = name.find('/', start);
        const std::string part = name.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (part.empty() || part == "." || part == "..") return false;
        if (end == std::string::npos) return true;
        start = end + 1;
    }
}

void collect_files(const std::string& folder, const std::string& prefix, std::vector<std::string>* names) {
    DIR* dir = opendir((folder + "/" + prefix).c_str());
    if (!dir) return;
    while (dirent* item = readdir(dir)) {
        const std::string name = item->d_name;
        if (name.empty() || name[0] == '.') continue;
        const std::string relative = prefix + name;
        if (relative == manifest_file_name) continue;
        struct stat info{};
        if (stat((folder + "/" + relative).c_str(), &info) != 0) continue;
        if (S_ISDIR(info.st_mode)) {
            collect_files(folder, relative + "/", names);
        } else if (S_ISREG(info.st_mode)) {
            names->push_back(relative);
        }
    }
    closedir(dir);
}

}  // namespace

std::string file_sha256(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return "";
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    EVP_DigestInit_ex(context, EVP_sha256(), nullptr);
    std::vector<unsigned char> block(1 << 16);
    for (size_t got; (got = std::fread(block.data(), 1, block.size(), file)) > 0;) {
        EVP_DigestUpdate(context, block.data(), got);
    }
    std::fclose(file);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context, digest, &length);
    EVP_MD_CTX_free(context);
    std::string hex;
    char pair[3];
    for (unsigned int i = 0; i < length; ++i) {
        std::snprintf(pair, sizeof pair, "%02x", digest[i]);
        hex += pair;
    }
    return hex;
}

std::string manifest_text(const std::string& folder) {
    std::vector<std::string> names;
    collect_files(folder, "", &names);
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) {
        const std::string path = folder + "/" + name;
        struct stat info{};
        if (stat(path.c_str(), &info) != 0) continue;
        char size[32];
        std::snprintf(size, sizeof size, " %10d ", static_cast<int>(info.st_size));
        text += file_sha256(path) + size + name + "\n";
    }
    return text;
}

bool make_manifest(const std::string& folder, std::string* error) {
    const std::string text = manifest_text(folder);
    const std::string final_path = folder + "/" + manifest_file_name;
    const std::string temporary = final_path + ".part";
    gzFile out = gzopen(temporary.c_str(), "wb9");
    if (!out) {
        if (error) *error = "cannot write " + temporary;
        return false;
    }
    const bool written = text.empty() || gzwrite(out, text.data(), static_cast<unsigned>(text.size())) ==
                                             static_cast<int>(text.size());
    if (gzclose(out) != Z_OK || !written || std::rename(temporary.c_str(), final_path.c_str()) != 0) {
        if (error) *error = "cannot write " + final_path;
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool web_host::start(const std::string& folder, int port) {
    root = folder;
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0) return false;
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    socklen_t length = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(listener, 64) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        close(listener);
        listener = -1;
        return false;
    }
    listen_port = ntohs(address.sin_port);
    stopping = false;
    acceptor = std::thread([this] { run(); });
    return true;
}

void web_host::stop() {
    stopping = true;
    release_stalls();
    if (acceptor.joinable()) acceptor.join();
    reap(true);
    if (listener >= 0) close(listener);
    listener = -1;
}

void web_host::stall_file(const std::string& name, size_t after_bytes) {
    std::lock_guard<std::mutex> hold(lock);
    faults[name] = fault{true, after_bytes};
}

void web_host::drop_file(const std::string& name, size_t after_bytes) {
    std::lock_guard<std::mutex> hold(lock);
    faults[name] = fault{false, after_bytes};
}

void web_host::clear_faults() {
    std::lock_guard<std::mutex> hold(lock);
    faults.clear();
}

void web_host::release_stalls() {
    std::lock_guard<std::mutex> hold(lock);
    ++release_generation;
    released.notify_all();
}

std::vector<std::string> web_host::requests() const {
    std::lock_guard<std::mutex> hold(lock);
    return asked;
}

void web_host::clear_requests() {
    std::lock_guard<std::mutex> hold(lock);
    asked.clear();
}

void web_host::reap(bool everything) {
    std::vector<worker> finished;
    {
        std::lock_guard<std::mutex> hold(lock);
        for (size_t i = 0; i < workers.size();) {
            if (everything || *workers[i].done) {
                finished.push_back(std::move(workers[i]));
                workers[i] = std::move(workers.back());
                workers.pop_back();
            } else {
                ++i;
            }
        }
    }
    for (worker& item : finished) item.thread.join();
}

void web_host::run() {
    while (!stopping) {
        pollfd waiting{listener, POLLIN, 0};
        if (poll(&waiting, 1, 50) != 1) continue;
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) continue;
        reap(false);
        auto done = std::make_shared<std::atomic<bool>>(false);
        std::thread thread([this, connection, done] {
            serve(connection);
            close(connection);
            *done = true;
        });
        std::lock_guard<std::mutex> hold(lock);
        workers.push_back(worker{std::move(thread), done});
    }
}

void web_host::serve(int connection) {
    std::string head;
    char block[4096];
    for (int waited = 0; head.find("\r\n\r\n") == std::string::npos && waited < 100 && !stopping;) {
        pollfd readable{connection, POLLIN, 0};
        if (poll(&readable, 1, 50) != 1) {
            ++waited;
            continue;
        }
        const ssize_t got = recv(connection, block, sizeof block, 0);
        if (got <= 0) return;
        head.append(block, static_cast<size_t>(got));
        if (head.size() > 65536) return;
    }
    const size_t line_end = head.find("\r\n");
    const std::string request_line = head.substr(0, line_end);
    const size_t first = request_line.find(' ');
    const size_t second = request_line.find(' ', first + 1);
    if (first == std::string::npos || second == std::string::npos || request_line.substr(0, first) != "GET") {
        send_text(connection, "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    const std::string path = percent_decode(request_line.substr(first + 1, second - first - 1));
    {
        std::lock_guard<std::mutex> hold(lock);
        asked.push_back(path);
    }
    const std::string prefix = "/soundpack/";
    const std::string name = path.compare(0, prefix.size(), prefix) == 0 ? path.substr(prefix.size()) : "";
    struct stat info{};
    if (!is_safe_name(name) || stat((root + "/" + name).c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        send_text(connection, "HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\nConnection: close\r\n\r\nNot found");
        return;
    }
    send_file(connection, root + "/" + name, name);
}

bool web_host::send_file(int connection, const std::string& path, const std::string& name) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    struct stat info{};
    fstat(file, &info);
    fault wanted;
    bool faulty = false;
    {
        std::lock_guard<std::mutex> hold(lock);
        auto found = faults.find(name);
        if (found != faults.end()) {
            wanted = found->second;
            faulty = true;
        }
    }
    std::string headers = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(info.st_size) +
                          "\r\nContent-Type: application/octet-stream\r\nConnection: close\r\n\r\n";
    // The head goes out with the first block of the body: a small segment of its own would wait
    // for the client's acknowledgement before the body could follow.
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(connection, IPPROTO_TCP, TCP_CORK, &on, sizeof on);
    bool ok = send_text(connection, headers);
    const size_t limit = faulty ? wanted.after : static_cast<size_t>(info.st_size);
    std::vector<char> block(1 << 18);
    size_t sent = 0;
    while (ok && sent < static_cast<size_t>(info.st_size)) {
        if (faulty && sent == limit) {
            if (!wanted.stall) break;  // dropped: a clean close in mid-body
            ok = hold_stall(connection);
            faulty = false;
            continue;
        }
        size_t want = block.size();
        if (faulty) want = std::min(want, limit - sent);
        const ssize_t got = read(file, block.data(), want);
        if (got <= 0) break;
        ok = send_all(connection, block.data(), static_cast<size_t>(got));
        sent += static_cast<size_t>(got);
    }
    if (ok && faulty && wanted.stall && sent == limit) ok = hold_stall(connection);
    const int off = 0;
    setsockopt(connection, IPPROTO_TCP, TCP_CORK, &off, sizeof off);
    close(file);
    return ok;
}

// Waits for a release, the host's stop, or the client's going away (then false).
bool web_host::hold_stall(int connection) {
    const int off = 0;
    setsockopt(connection, IPPROTO_TCP, TCP_CORK, &off, sizeof off);
    ++stalled_now;
    std::unique_lock<std::mutex> hold(lock);
    const int generation = release_generation;
    bool client_here = true;
    while (release_generation == generation && !stopping && client_here) {
        released.wait_for(hold, std::chrono::milliseconds(20));
        hold.unlock();
        pollfd readable{connection, POLLIN, 0};
        char byte;
        if (poll(&readable, 1, 0) == 1 && recv(connection, &byte, 1, MSG_DONTWAIT) <= 0) client_here = false;
        hold.lock();
    }
    --stalled_now;
    return client_here && !stopping;
}

}  // namespace testworld
