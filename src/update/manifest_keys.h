// The keys of an update manifest and of its records, in the order in which they are signed.
#pragma once

#include <QLatin1String>

namespace manifest_keys {

// The length of a literal, which not every compiler counts beforehand.
template<int size>
[[nodiscard]] constexpr QLatin1String literal(const char (&text)[size]) {
    return QLatin1String(text, size - 1);
}

inline constexpr QLatin1String schemaVersion = literal("schemaVersion");
inline constexpr QLatin1String publishedAt = literal("publishedAt");
inline constexpr QLatin1String runtime = literal("runtime");
inline constexpr QLatin1String launcher = literal("launcher");
inline constexpr QLatin1String editor = literal("editor");
inline constexpr QLatin1String pythonTools = literal("pythonTools");
inline constexpr QLatin1String plugins = literal("plugins");
inline constexpr QLatin1String projects = literal("projects");
inline constexpr QLatin1String signature = literal("signature");

inline constexpr QLatin1String id = literal("id");
inline constexpr QLatin1String minVersion = literal("minVersion");
inline constexpr QLatin1String name = literal("name");
inline constexpr QLatin1String path = literal("path");
inline constexpr QLatin1String setupSha256 = literal("setupSha256");
inline constexpr QLatin1String setupUrl = literal("setupUrl");
inline constexpr QLatin1String version = literal("version");
inline constexpr QLatin1String zipSha256 = literal("zipSha256");
inline constexpr QLatin1String zipUrl = literal("zipUrl");

// What a key of the root holds.
enum class RootValue { Scalar, Text, Component, Plugins, Projects };

struct RootKey {
    QLatin1String key;
    RootValue holds;
};

// The root, but for `signature`, which signs the rest. The order is neither the alphabet's nor the
// file's.
inline constexpr RootKey root[] = {
    {schemaVersion, RootValue::Scalar}, {publishedAt, RootValue::Text},
    {runtime, RootValue::Component},    {launcher, RootValue::Component},
    {editor, RootValue::Component},     {pythonTools, RootValue::Component},
    {plugins, RootValue::Plugins},      {projects, RootValue::Projects},
};

// A component's record has `version` too, which stays outside the signed form: a settled property of
// the format (theVersionOfAComponentNeverChangesIt). All values of records are texts.
inline constexpr QLatin1String signedOfComponent[] = {minVersion, setupUrl, setupSha256};
inline constexpr QLatin1String ofPlugin[] = {id, minVersion, path};
inline constexpr QLatin1String ofProject[] = {name, version, zipUrl, zipSha256};

} // namespace manifest_keys
