// What the names in a zip archive may be.
#pragma once

#include <QByteArray>
#include <QString>

// How the reason begins where a name leads out of the target.
[[nodiscard]] QString unsafeNameMark();

// Characters below U+0020, and delete.
[[nodiscard]] bool hasControlCharacter(const QString &name);

[[nodiscard]] bool isUtf8Name(const QByteArray &bytes);

// A name as it is stored, with slashes for backslashes. An old archive does not say what its names are
// in: UTF-8 if they can be, else GBK. No character is put in another's place, however alike they look.
[[nodiscard]] QString decodedZipName(const QByteArray &bytes);
