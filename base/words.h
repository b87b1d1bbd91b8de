#pragma once
// Word-level helpers over plain NUL-ended texts. A word ends at a blank, TAB or LF; there is no
// quoting. Comparisons fold A-Z only and give up (no match) after 400 characters.

#include <cstddef>

struct zorn_fixed_string;

// Comparisons count a word this long or longer as matching nothing.
constexpr int zorn_word_compare_limit = 400;

const char* next_arg(const char* text);
const char* next_arg_eol(const char* text);
const char* last_arg(const char* text);

bool word_equal(const char* a, const char* b);
int word_prefix_match(const char* short_text, const char* long_text);
int word_abbrev_match(const char* short_text, const char* full, int minimum);
bool option_equal(const char* text, const char* name);
bool parse_integer(const char* text, int* value);

bool word_in_list(const char* word, const char* list);
bool list_has_word(const char* list, const char* word);
bool list_has_all_words(const char* list, const char* words);
bool list_has_prefix(const char* list, const char* word);
bool list_has_all_prefixes(const char* list, const char* words);
bool list_has_abbrev(const char* word, const char* list, int minimum);

// Flags of extract_keyword.
enum : int {
    keyword_first = 1,
    keyword_last = 2,
    keyword_anywhere = 4,
    keyword_abbrev = 8,
};
bool extract_keyword(const char* text, zorn_fixed_string* out, const char* keyword, int flags);
const char* strip_keyword(const char* text, zorn_fixed_string* work, const char* keyword, bool* found);
const char* strip_force_flag(const char* text, zorn_fixed_string* work, bool* found);
void remove_words(const char* text, zorn_fixed_string* out, const char* words);

bool safe_strcpy(char* dest, const char* src, int size);
bool glob_match(const char* text, const char* pattern);
// Toggles the first word of word in *list (an owned malloc'd text or null); returns the user message.
const char* add_remove_keyword_line(const char* word, char** list);

bool base64_append(zorn_fixed_string* out, const unsigned char* data, int length);
bool base64_append_text(zorn_fixed_string* out, const char* text);
int base64_decode(unsigned char* out, int capacity, const char* text);
int base64_decode_string(zorn_fixed_string* out, const char* text);
