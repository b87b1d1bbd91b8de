#include "net/ssl_context.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cstdio>

#include "config/debug_log.h"

namespace {

const char* const cipher_default = "HIGH:@STRENGTH:!aNULL";
const char* const cipher_unauthenticated = "HIGH:@STRENGTH";
const char* const cipher_anonymous_first = "aNULL:HIGH:@STRENGTH";

struct ssl_settings {
    SSL_CTX* context = nullptr;
    const char* cipher_list = cipher_default;
    char private_key_file[zorn_ssl_file_name_limit + 1] = "";
    char certificate_file[zorn_ssl_file_name_limit + 1] = "";
    char chain_file[zorn_ssl_file_name_limit + 1] = "";
    void (*hook)() = nullptr;
};

ssl_settings& settings() {
    static ssl_settings s;
    return s;
}

void set_file_name(char* field, const char* file_name) {
    int i = 0;
    for (; file_name && file_name[i] && i < zorn_ssl_file_name_limit; i++) field[i] = file_name[i];
    field[i] = '\0';
}

void log_openssl_error() {
    char text[256];
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    zorn_client_debug_event(text, zorn_cat_severe);
}

// Steps that load files: a failure logs which file, then OpenSSL's reason.
bool load_named_files(SSL_CTX* context) {
    ssl_settings& s = settings();
    if (s.chain_file[0] && SSL_CTX_load_verify_locations(context, s.chain_file, nullptr) != 1) {
        zorn_client_debug_eventf(zorn_cat_severe,
                                 "Error in init_ssl(), unable to load server certificate chain from file '%s'.",
                                 s.chain_file);
        log_openssl_error();
        return false;
    }
    if (s.certificate_file[0] && SSL_CTX_use_certificate_file(context, s.certificate_file, SSL_FILETYPE_PEM) != 1) {
        zorn_client_debug_eventf(zorn_cat_severe,
                                 "Error in init_ssl(), unable to load server certificate from file '%s'.",
                                 s.certificate_file);
        log_openssl_error();
        return false;
    }
    if (s.private_key_file[0] && SSL_CTX_use_PrivateKey_file(context, s.private_key_file, SSL_FILETYPE_PEM) != 1) {
        zorn_client_debug_eventf(zorn_cat_severe,
                                 "Error in init_ssl(), unable to load server private key from file '%s'.",
                                 s.private_key_file);
        log_openssl_error();
        return false;
    }
    return true;
}

SSL_CTX* build_context() {
    ssl_settings& s = settings();
    OPENSSL_init_ssl(OPENSSL_INIT_LOAD_SSL_STRINGS | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
    SSL_CTX* context = SSL_CTX_new(TLS_method());
    if (!context) {
        log_openssl_error();
        return nullptr;
    }
    // SSLv2 no longer exists, so the option is 0; the call still reports the options in force.
    if (SSL_CTX_set_options(context, SSL_OP_NO_SSLv2 | SSL_OP_NO_SSLv3) == 0 ||
        SSL_CTX_set_cipher_list(context, s.cipher_list) != 1) {
        log_openssl_error();
        SSL_CTX_free(context);
        return nullptr;
    }
    // A peer that drops the TCP connection without a close alert has closed, not failed: the
    // game server does that after "quit", and the player should read "closed by server".
    SSL_CTX_set_options(context, SSL_OP_IGNORE_UNEXPECTED_EOF);
    // The game connection retries a write that wanted more room with a longer, moved buffer.
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    if (s.hook) s.hook();
    // The per-length DH callback is gone from OpenSSL 3; a server role gets a group matched to its
    // key, and get_tmp_dh_callback still answers explicit requests.
    SSL_CTX_set_dh_auto(context, 1);
    if (!load_named_files(context)) {
        SSL_CTX_free(context);
        return nullptr;
    }
    return context;
}

}  // namespace

bool zorn_ssl_startup() {
    SSL_CTX* context = build_context();
    if (!context) return false;
    ssl_settings& s = settings();
    SSL_CTX_free(s.context);
    s.context = context;
    return true;
}

SSL_CTX* zorn_ssl_context() { return settings().context; }

void zorn_ssl_select_default_ciphers() { settings().cipher_list = cipher_default; }
void zorn_ssl_select_unauthenticated_ciphers() { settings().cipher_list = cipher_unauthenticated; }
void zorn_ssl_select_anonymous_ciphers() { settings().cipher_list = cipher_anonymous_first; }
const char* zorn_ssl_cipher_list() { return settings().cipher_list; }

void zorn_ssl_set_private_key_file(const char* file_name) { set_file_name(settings().private_key_file, file_name); }
void zorn_ssl_set_certificate_file(const char* file_name) { set_file_name(settings().certificate_file, file_name); }
void zorn_ssl_set_certificate_chain_file(const char* file_name) { set_file_name(settings().chain_file, file_name); }
const char* zorn_ssl_private_key_file() { return settings().private_key_file; }
const char* zorn_ssl_certificate_file() { return settings().certificate_file; }
const char* zorn_ssl_certificate_chain_file() { return settings().chain_file; }

void zorn_ssl_set_startup_hook(void (*hook)()) { settings().hook = hook; }

void zorn_ssl_log_error_line(int ssl_error) {
    char text[256];
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    zorn_client_debug_eventf(zorn_cat_verbose, "%s - err code %d.", text, ssl_error);
}
