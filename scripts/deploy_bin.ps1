# Fills bin\ at the root of this source tree from a build tree, so that the launcher can be run from
# there with everything it needs beside it: the program, Qt's libraries and plug-ins, bin\translations.
#
#   scripts\deploy_bin.ps1 [-Tree build\release] [-Qt C:\Qt\5.15.2\msvc2019_64]
#
# Build the target app in that tree first:
#   cmake --preset release; cmake --build --preset release --target app
param(
    [string]$Tree = "build\release",
    [string]$Qt = ""
)

$ErrorActionPreference = "Stop"
$root = Split-Path -Parent $PSScriptRoot
$treePath = if ([IO.Path]::IsPathRooted($Tree)) { $Tree } else { Join-Path $root $Tree }
$program = Join-Path $treePath "bin\Quorvaner.exe"
$translation = Join-Path $treePath "bin\translations\quorvane_en.qm"
foreach ($file in $program, $translation) {
    if (-not (Test-Path -LiteralPath $file -PathType Leaf)) {
        throw "$file is missing; build the target app in $treePath first"
    }
}

# Qt's own deployment program, from the given Qt or from the search path.
$deploy = if ($Qt) { Join-Path $Qt "bin\windeployqt.exe" } else { "windeployqt.exe" }
if (-not (Get-Command $deploy -ErrorAction SilentlyContinue)) {
    throw "windeployqt.exe was not found; name Qt's folder with -Qt"
}

$bin = Join-Path $root "bin"
$translations = Join-Path $bin "translations"
New-Item -ItemType Directory -Force -Path $translations | Out-Null
Copy-Item -LiteralPath $program -Destination $bin -Force
Copy-Item -LiteralPath $translation -Destination $translations -Force

# No Qt translations: their files would stand among the launcher's own.
& $deploy --no-translations --no-system-d3d-compiler --no-opengl-sw (Join-Path $bin "Quorvaner.exe")
if ($LASTEXITCODE -ne 0) {
    throw "windeployqt failed with exit code $LASTEXITCODE"
}
Write-Host "deploy_bin: bin\Quorvaner.exe is ready"
