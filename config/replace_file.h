#pragma once
// Writes a file through a temporary file beside it that is renamed over the target only when
// everything was written and flushed to disk. A failure at any point leaves the old file as it
// was: settings files are the user's data and must never be left half written by the client.

#include <cstdio>
#include <string>

class zorn_replace_file {
public:
    // Creates the temporary file; stream() is null when that failed.
    explicit zorn_replace_file(const char* target_path);
    // Abandons the temporary file unless commit succeeded.
    ~zorn_replace_file();
    zorn_replace_file(const zorn_replace_file&) = delete;
    zorn_replace_file& operator=(const zorn_replace_file&) = delete;

    FILE* stream() const { return file; }
    // Flushes, syncs, closes and renames over the target. False (target untouched) when any
    // write failed or a step of the commit did.
    bool commit();

private:
    void abandon();

    std::string target;
    std::string temporary;
    FILE* file = nullptr;
};

// Removes the temporary files that a process killed in the middle of a save left beside its
// settings files ("NAME.cfg.XXXXXX"), when they are older than min_age_seconds: younger ones may
// belong to a save under way in another client. Answers how many were removed.
int zorn_remove_stale_replace_files(const char* directory, int min_age_seconds);
