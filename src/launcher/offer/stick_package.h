// A stick's package in a place of our own: what is proved there is what is unpacked, and a slow stick is
// read once.
#pragma once

#include "update/files/cancel_flag.h"

#include <QLockFile>
#include <QString>

#include <memory>

// The copy of one package, under its own name in a folder for this user alone below `update/temp`. It is
// gone with this object. One thread.
class StickPackage {
public:
    enum class Outcome { Made, Failed, Cancelled };

    StickPackage() = default;
    ~StickPackage();
    StickPackage(const StickPackage &) = delete;
    StickPackage &operator=(const StickPackage &) = delete;

    // Once. Asks the flag, which may be null, before each piece. Without success nothing is left.
    [[nodiscard]] Outcome copyFrom(const QString &package, const CancelFlag *cancelRef);

    // The copy; empty: there is none.
    [[nodiscard]] QString path() const { return copy; }

    // Earlier than the end, to make room.
    void remove();

private:
    [[nodiscard]] bool makeFolder();

    QString folder;
    QString copy;
    std::unique_ptr<QLockFile> inUse;
};

// Removes the copies that killed launchers left.
void removeLeftPackages();
