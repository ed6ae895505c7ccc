// Holds back what goes to the debug log while it lives, so that a test can look at all of it.
#pragma once

#include <QStringList>

namespace support {

// One at a time; messages of any thread are taken.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture &) = delete;
    MessageCapture &operator=(const MessageCapture &) = delete;

    // The texts of all messages so far, oldest first.
    [[nodiscard]] QStringList messages() const;
};

} // namespace support
