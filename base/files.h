#pragma once
// Small file helpers over stdio and POSIX: lines and fields from text files, directory chains,
// a writable-directory probe and lock files.

#include <cstdio>

struct zorn_fixed_string;

// The probe file that zorn_create_and_check_writeable_directory writes and removes.
constexpr const char* zorn_probe_file_name = "xx-rw-test.qqq";

bool zorn_recursive_mkdir(const char* path, int mode, zorn_fixed_string* failed_path);
bool zorn_create_and_check_writeable_directory(const char* path, int mode, zorn_fixed_string* failed_path);

int zorn_lock_file(const char* path);
bool zorn_unlock_file(int descriptor);

constexpr int fget_long_size = 4201;
constexpr int fget_tilde_size = 3992;
constexpr int fget_semicolon_size = 4000;
constexpr int fget_block_count = 12;

int fget_line(FILE* stream, char* buffer, int size);
int fget_long(FILE* stream, char* buffer);
int fget_block(FILE* stream, int* numbers);
int fget_dblock(FILE* stream, double* numbers);
int fget_tilde_text(FILE* stream, char* buffer);
int fget_semicolon_text(FILE* stream, char* buffer);
int fget_hash_line(FILE* stream, char* buffer, int size);
int fget_hash_word(FILE* stream, char* buffer, int size);
bool fget_match_line(FILE* stream, const char* expected);
bool text_starts_with(const char* text, const char* prefix);

void fput_int_table(FILE* stream, const char* label, const int* numbers, int count);
void fput_byte_table(FILE* stream, const char* label, const signed char* numbers, int count);
bool fget_int_table_row(FILE* stream, const char* row_text, int* numbers, int count);
bool fget_byte_table_row(FILE* stream, const char* row_text, signed char* numbers, int count);
