// One file between its proof and its use.
#pragma once

#include <QString>

#include <memory>

// From its making on, Windows lets nobody write, rename or remove the file. Other systems know no such
// hold: there it is remembered which file lies at the path, and asked for again. One thread.
class HeldFile {
public:
    explicit HeldFile(const QString &path);
    ~HeldFile();
    HeldFile(const HeldFile &) = delete;
    HeldFile &operator=(const HeldFile &) = delete;

    // Whether the path still leads to that file, unchanged. False as well if there was no holding it.
    [[nodiscard]] bool isUnchanged() const;

private:
    struct Hold;
    std::unique_ptr<Hold> hold;
};
