#include "testworld/certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdio>

namespace testworld {

namespace {

constexpr long one_day_seconds = 24L * 60 * 60;

bool add_subject_alt_name(X509* cert) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    X509_EXTENSION* extension =
        X509V3_EXT_conf_nid(nullptr, &context, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
    if (!extension) return false;
    const bool added = X509_add_ext(cert, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    return added;
}

}  // namespace

server_identity::~server_identity() {
    X509_free(cert);
    EVP_PKEY_free(private_key);
}

bool server_identity::generate() {
    EVP_PKEY_free(private_key);
    private_key = EVP_EC_gen("P-256");
    return private_key && make_certificate();
}

bool server_identity::generate_with_key_file(const std::string& key_path) {
    EVP_PKEY_free(private_key);
    private_key = nullptr;
    if (FILE* key_file = std::fopen(key_path.c_str(), "r")) {
        private_key = PEM_read_PrivateKey(key_file, nullptr, nullptr, nullptr);
        std::fclose(key_file);
        return private_key && make_certificate();
    }
    private_key = EVP_EC_gen("P-256");
    if (!private_key) return false;
    FILE* key_file = std::fopen(key_path.c_str(), "w");
    if (!key_file) return false;
    const bool written = PEM_write_PrivateKey(key_file, private_key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
    return (std::fclose(key_file) == 0) && written && make_certificate();
}

bool server_identity::make_certificate() {
    X509_free(cert);
    cert = X509_new();
    if (!cert) return false;
    X509_NAME* name = X509_get_subject_name(cert);
    const bool built =
        X509_set_version(cert, 2) == 1 && ASN1_INTEGER_set(X509_get_serialNumber(cert), 1) == 1 &&
        X509_gmtime_adj(X509_getm_notBefore(cert), -one_day_seconds) != nullptr &&
        X509_gmtime_adj(X509_getm_notAfter(cert), 365 * one_day_seconds) != nullptr &&
        X509_set_pubkey(cert, private_key) == 1 &&
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1,
                                   -1, 0) == 1 &&
        X509_set_issuer_name(cert, name) == 1 && add_subject_alt_name(cert) &&
        X509_sign(cert, private_key, EVP_sha256()) > 0;
    return built;
}

bool server_identity::write_pem_files(const std::string& key_path, const std::string& certificate_path) const {
    if (!private_key || !cert) return false;
    FILE* key_file = std::fopen(key_path.c_str(), "w");
    if (!key_file) return false;
    const bool key_written = PEM_write_PrivateKey(key_file, private_key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
    std::fclose(key_file);
    FILE* cert_file = std::fopen(certificate_path.c_str(), "w");
    if (!cert_file) return false;
    const bool cert_written = PEM_write_X509(cert_file, cert) == 1;
    std::fclose(cert_file);
    return key_written && cert_written;
}

SSL_CTX* server_identity::make_server_context() const {
    if (!private_key || !cert) return nullptr;
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    if (!context) return nullptr;
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_CTX_set_dh_auto(context, 1);
    if (SSL_CTX_use_certificate(context, cert) != 1 || SSL_CTX_use_PrivateKey(context, private_key) != 1 ||
        SSL_CTX_check_private_key(context) != 1) {
        SSL_CTX_free(context);
        return nullptr;
    }
    return context;
}

}  // namespace testworld
