#pragma once
// Starting other programs: the URL opener that the client uses, and the checks and starts of a
// program image that belong to the launcher arrangement (nothing in the client calls those).

// The longest opener command: the opener's name, a blank and the URL.
constexpr int zorn_http_fork_limit = 1024;

// Hands a URL to the desktop's opener (xdg-open) and waits for the opener's exit. The URL reaches
// it as one argument and passes no shell, since it may come from text the server sent. True when
// the desktop took the URL: any exit status of the opener counts, and so does a wait that finds
// the child already reaped (ECHILD); an opener ended by a signal, a failed fork or any other
// failed wait does not.
bool zorn_http_fork(const char* url);

// An image shorter than this can't be a program.
constexpr long zorn_boot_file_min_size = 100;

// True when the image can't be used: it can't be opened or is shorter than 100 bytes.
bool zorn_is_boot_file_bad(const char* path);

// Makes the image executable (0700) and starts it in a child of its own session, without waiting.
// True when the child was started; whether its exec worked shows only in the log (the child then
// exits with code 1).
bool zorn_fork_exec(const char* path, char* const argv[]);

// Makes the image executable and replaces this process with it. Comes back only when that failed,
// with a log line; the caller carries on with the old image.
void zorn_boot_exec(const char* path, char* const argv[]);
