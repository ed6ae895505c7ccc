// What both sides of the apply benchmark work on: a package of a known size, its manifest, and the
// project that is there before.
#pragma once

#include <QByteArray>
#include <QString>

// The folders and names below one folder.
struct Place {
    QString root;

    [[nodiscard]] QString at(const char *name) const { return root + '/' + name; }
    [[nodiscard]] QByteArray bytes(const char *name) const;
};

// Writes the package "line3.zip" of `mebibytes` in `files` files, "manifest.json" with the publisher's key
// in "app/config", and the folder "old".
void makePackage(const Place &place, int mebibytes, int files);

// Applies the package to "project", for a process that is measured. Idle: all but the apply itself.
// Returns what the process is to end with.
[[nodiscard]] int applyPackage(const Place &place, bool idle);
