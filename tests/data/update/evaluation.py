"""What a manifest offers to an installation: a second implementation of the rules, for make_vectors.py.

Written from the description of the rules and not from the launcher's code. An installation is a
dict as README.md tells it; `{app}`, `{above}`, `{stick}` and `{project}` stand for the program's
folder, the folder above it, the stick's folder and the path of the project file. Executables have no
versions of their own here.
"""
import json
import re

ONLINE = "https://updates.example/Quorvaner/Update/"
LABELS = {"runtime": "Runtime", "launcher": "Launcher", "editor": "Editor", "pythonTools": "Python 工具"}

# --- values and versions ------------------------------------------------------------------------


def text_of(record, key):
    value = record.get(key) if isinstance(record, dict) else None
    return value if isinstance(value, str) else ""


def object_of(record, key):
    value = record.get(key) if isinstance(record, dict) else None
    return value if isinstance(value, dict) else {}


def array_of(record, key):
    value = record.get(key)
    return value if isinstance(value, list) else []


def json_object(text):
    try:
        value = json.loads(text or "")
    except ValueError:
        return {}
    return value if isinstance(value, dict) else {}


def normalized(version):
    version = version.strip()
    return version[1:].strip() if version[:1] in ("v", "V") else version


def number(part):
    found = re.fullmatch(r"[+-]?[0-9]+", part.strip())
    value = int(found.group()) if found else 0
    return value if -2**31 <= value < 2**31 else 0


def compared(left, right):
    left, right = ([number(part) for part in normalized(side).split(".")] for side in (left, right))
    length = max(len(left), len(right))
    left, right = (side + [0] * (length - len(side)) for side in (left, right))
    return (left > right) - (left < right)


def extracted(text):
    found = re.search(r"[0-9]+\.[0-9]+\.[0-9]+(\.[0-9]+)?", text)
    return found.group() if found else ""


# --- what is installed --------------------------------------------------------------------------


def current(installation, key):
    release = json_object(installation["release_version"])
    version = text_of(release, key + "PackageVersion") or text_of(release, key + "MinVersion")
    if not version and key == "pythonTools":
        return text_of(json_object(installation["python_manifest"]), "bundledPythonVersion")
    return version


def installed_project_version(project):
    stated = object_of(json_object(project["text"]), "project").get("version")
    if isinstance(stated, (int, float)) and not isinstance(stated, bool):
        stated = "%.8f" % stated
    version = normalized(stated) if isinstance(stated, str) else ""
    if not version:
        found = re.search(r'"version"\s*:\s*"([^"]+)"', project["text"])
        version = normalized(found.group(1)) if found else ""
    return version or (project["sidecar"] or "").strip()


def exists(installation, path):
    return path in installation["files"]


# --- the offer ----------------------------------------------------------------------------------


def place(installation):
    """Source and base of the manifest."""
    if installation["usb"]:
        return "{stick}/manifest.json", "{stick}"
    return ONLINE + "manifest.json", ONLINE


def package_path(installation, value):
    return "{stick}/" + value if installation["usb"] else ""


def target(record):
    return extracted(text_of(record, "version").strip()) or extracted(text_of(record, "setupUrl"))


def weigh_component(installation, key, record):
    label, url = LABELS[key], text_of(record, "setupUrl")
    if not url.strip():
        return False, f"{label} 未提供 setupUrl。"
    if installation["usb"] and not exists(installation, package_path(installation, url)):
        return False, f"{label} 安装包缺失：{package_path(installation, url)}"
    now, then = current(installation, key), target(record)
    if not then:
        return False, f"{label} 缺少可识别的目标版本（manifest 未提供 version 且 setupUrl 无版本号）。"
    if now and compared(now, then) >= 0:
        return False, f"目标版本 {then} 不高于当前版本 {now}。"
    minimum = text_of(record, "minVersion")
    if minimum.strip() and now and compared(now, minimum) < 0:
        return False, f"当前版本 {now} 低于该更新包最小可更新版本 {minimum}。"
    return True, f"可从 {now or '未知版本'} 更新到 {then}。"


def weigh_project(installation, record):
    if not record:
        return False, "manifest 未提供可更新的项目记录。"
    project = installation["project"]
    remote = normalized(text_of(record, "version"))
    local = normalized(installed_project_version(project)) if project else ""
    if remote and local and compared(local, remote) >= 0:
        return False, f"当前项目版本 {local} 已不低于更新版本 {remote}。"
    if not text_of(record, "zipUrl").strip():
        return False, "项目记录缺少 zipUrl。"
    if not text_of(record, "zipSha256").strip():
        return False, "项目记录缺少 zipSha256。"
    path = package_path(installation, text_of(record, "zipUrl"))
    if installation["usb"] and not exists(installation, path):
        return False, f"项目更新包缺失：{path}"
    return True, f"可更新到 {remote or '新版本'}。"


def matches(name, project_name, folder):
    name, project_name, folder = name.lower(), project_name.lower(), folder.lower()
    if not name:
        return False
    if name == project_name:
        return True
    return bool(folder) and (name == folder or (name == "demo" and folder.startswith("demo")))


def plugin_warnings(installation, plugins):
    warnings = []
    for plugin in plugins:
        path = text_of(plugin, "path").strip().replace("\\", "/")
        if not path:
            continue
        while path.startswith("./"):
            path = path[2:]
        candidates = [path] if path.startswith("/") else ["{app}/" + path]
        if path.lower().startswith("bin/"):
            candidates.insert(0, "{above}/" + path)
        if not any(exists(installation, candidate) for candidate in candidates):
            warnings.append(f"插件 {text_of(plugin, 'id')} 缺失：{candidates[0]}（仅警告，不拦截）。")
    return warnings


def runtime_warnings(installation, record):
    now, minimum = current(installation, "runtime"), text_of(record, "minVersion")
    if now and minimum and compared(now, minimum) < 0:
        return [f"Runtime 版本 {now} 低于 manifest 要求 {minimum}（仅警告，不拦截）。"]
    return []


def find_record(installation, root):
    """The project's name as it is told, and the first record that matches, or None."""
    project = installation["project"]
    folder = project["folder"] if project else ""
    stated = text_of(object_of(json_object(project["text"]), "project"), "name") if project else ""
    name = stated or folder
    records = array_of(root, "projects")
    return name, next((record for record in records if matches(text_of(record, "name"), name, folder)), None)


def offer_lines(installation, offers, warnings):
    project = installation["project"]
    version = installed_project_version(project) if project else ""
    return ([f"已验证的更新可用（来源：{place(installation)[0]}）。"] +
            ([f"当前项目版本：{version}（{{project}}）"] if version else []) +
            ["可更新项：" + ", ".join(offers)] + warnings +
            ["检测到离线更新包，可在主界面选择「立即更新」或继续启动。" if installation["usb"] else
             "发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。"])


def evaluate(root, installation):
    records = {key: object_of(root, key) for key in LABELS}
    warnings = runtime_warnings(installation, records["runtime"])
    warnings += plugin_warnings(installation, array_of(root, "plugins"))

    name, record = find_record(installation, root)
    if record is None:
        project, reason = False, f"未找到与当前项目匹配的项目记录（{name}）。"
    else:
        project, reason = weigh_project(installation, record)
    kept = record if project else {}
    components = {key: weigh_component(installation, key, records[key]) for key in LABELS}

    offers = [f"Project -> {text_of(kept, 'version') or '新版本'}"] if project else []
    offers += [f"{LABELS[key]} -> {target(records[key])}" for key in LABELS if components[key][0]]
    if offers:
        lines = offer_lines(installation, offers, warnings)
    else:
        lines = (["未检测到高于当前版本的可用更新。", "项目：" + reason] +
                 [f"{LABELS[key]}：{components[key][1]}" for key in LABELS] + warnings)

    # The dialog and the identity of the offer look at what was kept.
    choices = {"project": weigh_project(installation, kept), **components}
    if not offers:
        choices = dict.fromkeys(choices, (False, "当前没有可应用的已验证更新。"))
    eligible = {key: f"{key}:{target(records[key])}" for key in LABELS if components[key][0]}
    identity = [f"project:{text_of(kept, 'name')}:{text_of(kept, 'version')}"] if project else []
    items = [f"project:{text_of(kept, 'version')}"] if project else []
    in_log_order = ("runtime", "editor", "launcher", "pythonTools")
    versions = {key: current(installation, key) for key in LABELS}
    return {
        "found": bool(offers),
        "summary": "\n".join(lines),
        "choices": {key: {"available": choice[0], "reason": choice[1]} for key, choice in choices.items()},
        "project_record": kept,
        "fingerprint": "|".join(sorted(identity + list(eligible.values()), key=str.lower)),
        "items": ", ".join(items + [eligible[key] for key in in_log_order if key in eligible]),
        "current": versions,
        "target": {key: target(records[key]) for key in LABELS},
        "versions": "版本：Launcher {launcher} / Runtime {runtime} / Editor {editor}".format(
            **{key: version or "未知" for key, version in versions.items()}),
    }
