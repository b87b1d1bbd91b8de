#pragma once
// The test world's TLS identity: a P-256 key and a self-signed certificate for "localhost" and
// 127.0.0.1, made in memory at every start. Nothing is read from or left in files, unless a test
// asks for PEM copies for another peer.

#include <openssl/types.h>

#include <string>

namespace testworld {

class server_identity {
public:
    server_identity() = default;
    ~server_identity();
    server_identity(const server_identity&) = delete;
    server_identity& operator=(const server_identity&) = delete;

    bool generate();
    // The key comes from key_path (PEM) when the file exists, else a new one is made and written
    // there, so that the server's key survives a restart; the certificate is made anew either way.
    bool generate_with_key_file(const std::string& key_path);
    bool write_pem_files(const std::string& key_path, const std::string& certificate_path) const;
    // A server context with this identity; the caller frees it. Null on failure.
    SSL_CTX* make_server_context() const;

    EVP_PKEY* key() const { return private_key; }
    X509* certificate() const { return cert; }

private:
    bool make_certificate();

    EVP_PKEY* private_key = nullptr;
    X509* cert = nullptr;
};

}  // namespace testworld
