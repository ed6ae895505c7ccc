// Rights as an ordinary user meets them, also where the tests run as root. Not on Windows.
#pragma once

#include <QFile>
#include <QString>

#include <unistd.h>

namespace support {

// Root may do anything. As long as this lives, the test is somebody else, to whom the folder belongs.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const QString &folder)
        : isOne(::geteuid() != 0) {
        const uid_t nobody = 65534;
        const QByteArray name = QFile::encodeName(folder);
        if (isOne || ::chown(name.constData(), nobody, static_cast<gid_t>(-1)) != 0 ||
            ::seteuid(nobody) != 0)
            return;
        becameOne = true;
        isOne = ::euidaccess(name.constData(), W_OK | X_OK) == 0;
    }
    ~OrdinaryUser() {
        if (becameOne && ::seteuid(0) != 0)
            qFatal("cannot be root again");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    bool isOne;

private:
    bool becameOne = false;
};

} // namespace support
