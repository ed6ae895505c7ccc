// Reading text of unknown encoding, writing text, making a file's folder, hashing a file: what
// everything that reads or writes a file rests on.
//
// Free functions without state, for any thread. Failure is a false or null result, with the reason
// in English and untranslated in `error` if a place is given; success leaves that place alone. A pipe
// or a device is refused unopened ("not a regular file"): no reading or writing waits for its other end.
#pragma once

#include <QString>

// The text of these bytes: UTF-8 behind a byte-order mark, else UTF-8 if the bytes are valid, else GBK.
// No other encoding is recognised. Not null, though of no bytes.
[[nodiscard]] QString decodeText(const QByteArray &bytes);

// The file's text, decoded like that. Null only if the file cannot be opened or read or is too
// large for memory; an empty file gives an empty text that is not null.
[[nodiscard]] QString readTextFile(const QString &path, QString *error = nullptr);

// Replaces the file's content by `text` in UTF-8 without a byte-order mark and with the platform's
// line ends; makes the folder if it is missing. A write that fails once the file is open goes
// unnoticed.
[[nodiscard]] bool writeTextFile(const QString &path, const QString &text,
                                 QString *error = nullptr);

// Makes the folder that `filePath` lies in, with all folders above it.
[[nodiscard]] bool ensureParentDir(const QString &filePath, QString *error = nullptr);

// SHA-256 of the file's bytes as lower-case hexadecimal text, with 1 MiB of it in memory at a time.
// `isStopped` is asked before each of them; once it says yes there is no hash ("interrupted").
[[nodiscard]] QString fileSha256Hex(const QString &path, QString *error = nullptr,
                                    bool (*isStopped)() = nullptr);
