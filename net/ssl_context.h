#pragma once
// The process-wide TLS context: one SSL_CTX, set up once by zorn_ssl_startup before any other
// thread starts and only read afterwards. Peer certificates are never verified.

#include <openssl/types.h>

// Builds the context. False when OpenSSL could not be set up; the reason is in the debug log.
// Calling it again replaces the context (connections already made keep the old one alive).
bool zorn_ssl_startup();
// The context, or null before zorn_ssl_startup succeeded.
SSL_CTX* zorn_ssl_context();

// The cipher list is chosen before zorn_ssl_startup: the context takes it there, and every new
// connection is given it again at its handshake.
void zorn_ssl_select_default_ciphers();        // "HIGH:@STRENGTH:!aNULL"
void zorn_ssl_select_unauthenticated_ciphers();  // "HIGH:@STRENGTH"
void zorn_ssl_select_anonymous_ciphers();       // "aNULL:HIGH:@STRENGTH"
const char* zorn_ssl_cipher_list();

// File names are cut at 511 characters; null means none. Only a server role needs them.
constexpr int zorn_ssl_file_name_limit = 511;
void zorn_ssl_set_private_key_file(const char* file_name);
void zorn_ssl_set_certificate_file(const char* file_name);
void zorn_ssl_set_certificate_chain_file(const char* file_name);
const char* zorn_ssl_private_key_file();
const char* zorn_ssl_certificate_file();
const char* zorn_ssl_certificate_chain_file();

// Called during zorn_ssl_startup, after the cipher list is set; null for none.
void zorn_ssl_set_startup_hook(void (*hook)());

// The Diffie-Hellman group for a key length (512, 768, 1024, 1536, 2048, 3072 or 4096 bits), built
// at first demand and kept for the life of the process; null for any other length. The result is
// borrowed: take a reference (EVP_PKEY_up_ref) before handing it to OpenSSL. Safe from any thread.
EVP_PKEY* get_tmp_dh_callback(SSL* ssl, int is_export, int key_length);

// Logs "<OpenSSL error text> - err code <ssl_error>." at the chatty category; drains one queued error.
void zorn_ssl_log_error_line(int ssl_error);
