// The steps of an apply as a test sees them: the calls that project_apply.cpp makes downwards go
// through here (linker option --wrap), are noted, and may have something happen in them.
#pragma once

#include <QMap>
#include <QStringList>

#include <functional>

namespace wrapped_steps {

// The names of the calls so far, in order.
extern QStringList calls;
// What happens when the call of that name has done its work, before its caller goes on.
extern QMap<QString, std::function<void()>> after;
// Done in the place of the real replacement; returns its error text, null for success.
extern std::function<QString(const QString &target, const QString &backup)> insteadOfReplace;

void reset();

} // namespace wrapped_steps
