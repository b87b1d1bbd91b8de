#pragma once
// Hands a URL to the desktop's opener (xdg-open) and waits for the opener's exit. The URL reaches
// it as one argument and passes no shell, since it may come from text the server sent.

// The longest command: the opener's name, a blank and the URL.
constexpr int zorn_http_fork_limit = 1024;

// True when the desktop took the URL: any exit status of the opener counts, only an opener ended
// by a signal (or a failed fork or wait) does not.
bool zorn_http_fork(const char* url);
