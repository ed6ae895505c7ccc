// What is wrong with a signature or a hash.
#include "quorvanectl/log/known_lines.h"

#include <iterator>

namespace ctl {
namespace {

constexpr KnownLine signatureRows[] = {
    {LineKind::Tells, "manifest JSON is invalid", "", "The manifest is no JSON object.",
     "Compare it with the publisher's; `quorvanectl update lint` names the place.",
     "清单不是 JSON 对象。", "与发布方的文件比较；`quorvanectl update lint` 会指出位置。"},
    {LineKind::Tells, "manifest JSON is empty", "", "The file is empty.", "Copy it again.",
     "文件为空。", "重新复制。"},
    {LineKind::Tells, "signature is empty", "", "The manifest was never signed.",
     "Tell the publisher: `quorvanectl update sign`.", "清单没有签名。",
     "告知发布方：`quorvanectl update sign`。"},
    {LineKind::Tells, "signature base64 is invalid", "", "The signature is no base64.",
     "Tell the publisher.", "签名不是 base64。", "告知发布方。"},
    {LineKind::Tells, "update public key not found: %1", "", "`config/update.pub` is missing.",
     "Repair the installation.", "缺少 `config/update.pub`。", "修复安装。"},
    {LineKind::Tells, "unable to read update public key: %1", "", "It cannot be read.",
     "Check its rights; repair the installation.", "无法读取。", "检查权限；修复安装。"},
    {LineKind::Tells, "update public key PEM is invalid", "", "It holds no key.",
     "Repair the installation.", "其中没有密钥。", "修复安装。"},
    {LineKind::Tells,
     "RSA signature verification failed (%1), key=%2, canonical_sha256=%3, sig_bytes=%4", "",
     "The manifest was signed with another key, or changed afterwards. `%1` lists the four "
     "attempts.",
     "Ask the publisher to run `quorvanectl update verify` and compare `canonical_sha256`. If it "
     "is the same, the key is another one. If it differs, the manifest was changed.",
     "清单用另一个密钥签名，或签名之后被改动。`%1` 列出四次尝试。",
     "请发布方运行 `quorvanectl update verify`，比较 "
     "`canonical_sha256`。相同：密钥不同；不同：清单被改动。"},
    {LineKind::Tells, "BCryptVerifySignature direct=0x%1 reversed=0x%2", "",
     "The status of the first two attempts.",
     "`FFFFFFFFC000A000`: the signature does not fit. Anything else is a fault of the system.",
     "前两次尝试的状态。", "`FFFFFFFFC000A000`：签名不相符。其他值是系统的故障。"},
    {LineKind::Tells, "; CryptVerifySignature direct=%1 reversed=%2", "",
     "The errors of the last two attempts.", "2148073478: the signature does not fit.",
     "后两次尝试的错误码。", "2148073478：签名不相符。"},
    {LineKind::Tells, "BCryptVerifySignature direct", "",
     "The first attempt passed: an ordinary signature.", "None.", "第一次尝试通过：普通的签名。",
     "无需处理。"},
    {LineKind::Tells, "BCryptVerifySignature reversed-bytes", "",
     "The second attempt passed: the bytes of the signature are in reverse order.",
     "None; tell the publisher.", "第二次尝试通过：签名的字节顺序相反。", "无需处理；告知发布方。"},
    {LineKind::Tells, "CryptVerifySignature direct", "",
     "The third attempt passed: an ordinary signature.", "None.", "第三次尝试通过：普通的签名。",
     "无需处理。"},
    {LineKind::Tells, "CryptVerifySignature reversed-bytes", "", "The fourth attempt passed.",
     "None.", "第四次尝试通过。", "无需处理。"},
    {LineKind::Tells, "CryptDecodeObjectEx failed: %1", "", "`update.pub` is no public key.",
     "Repair the installation.", "`update.pub` 不是公钥。", "修复安装。"},
    {LineKind::Tells, "CryptImportPublicKeyInfoEx2 failed: %1", "",
     "It is not an RSA key, or the system refuses it.", "Repair the installation.",
     "不是 RSA 密钥，或系统拒绝使用。", "修复安装。"},
    {LineKind::Tells, "; CryptAcquireContext failed: %1", "",
     "The older interface of the system is missing.", "None: the first two attempts decide.",
     "系统中没有较旧的接口。", "无需处理：以前两次尝试为准。"},
    {LineKind::Tells, "; CryptDecodeObjectEx(legacy) failed: %1", "",
     "The older interface of the system is missing.", "None: the first two attempts decide.",
     "系统中没有较旧的接口。", "无需处理：以前两次尝试为准。"},
    {LineKind::Tells, "; CryptImportPublicKeyInfo failed: %1", "",
     "The older interface of the system is missing.", "None: the first two attempts decide.",
     "系统中没有较旧的接口。", "无需处理：以前两次尝试为准。"},
    {LineKind::Tells, "signature verified", "", "The manifest is the publisher's.", "None.",
     "清单由发布方签名。", "无需处理。"},
    {LineKind::Tells, "expected SHA256 is empty", "", "There is no hash to compare with.",
     "Tell the publisher.", "没有可以比较的哈希。", "告知发布方。"},
    {LineKind::Tells, "unable to compute SHA256 for %1", "", "The file cannot be read.",
     "Check the stick or the disk.", "文件无法读取。", "检查 U 盘或磁盘。"},
    {LineKind::Tells, "SHA256 mismatch for %1 (expected %2, got %3)", "",
     "The file is not the published one.",
     "Copy it again. If that does not help, give the publisher both hashes.",
     "文件与发布的不一致。", "重新复制。如果仍然如此，请把两个哈希告知发布方。"},
    {LineKind::Tells, "SHA256 verified", "", "The file is the published one.", "None.",
     "文件与发布的一致。", "无需处理。"},
};

} // namespace

KnownTable signatureTable() {
    return {TableKind::InnerTexts, "Signatures and hashes", signatureRows,
            int(std::size(signatureRows))};
}

} // namespace ctl
