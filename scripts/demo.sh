#!/usr/bin/env bash
# A short scenario through the zetsettings tool on the machine's default store: a network
# profile stored and read back, the chooser's list walked, and the registry underneath shown
# and exported to a .reg file. Usage: scripts/demo.sh [BUILD_DIR]   (default: build)
set -euo pipefail
cd "$(dirname "$0")/.."

tool="${1:-build}/tools/zetsettings"
[ -x "$tool" ] || { echo "demo: $tool is not built" >&2; exit 1; }
export_file="${TMPDIR:-/tmp}/zetsettings-demo.reg"

step() { printf '\n== %s\n$ zetsettings %s\n' "$1" "${*:2}"; "$tool" "${@:2}"; }

step "Store a wireless network profile; its secret member is kept encrypted" \
  network set MyWLAN --text "office network" --flag1 1 --secret-text "s3cret-key" --plain-hex "0a:0b:0c"
step "Read it back: the secret stays hidden unless asked for" network show MyWLAN
step "... and with --secret, decrypted" network show MyWLAN --secret
step "Every profile on this machine" network list

step "The chooser's preferred list: put three networks in front, one after the other" chooser front Cafe
"$tool" chooser front Home
"$tool" chooser front MyWLAN --match-kind 3 --mac 00:11:22:33:44:55
step "Walk it from the top" chooser next --first
step "The next step goes on where the last one stopped, in this process or any other" chooser next
step "The list, with the walk's place marked" chooser list
step "Stop the walk" chooser stop

step "The registry underneath, as reg.exe shows it" reg query 'HKLM\Software\Orvane\QXL' /s
step "Export it as a .reg file that Windows' own reg import reads" \
  reg export 'HKLM\Software\Orvane\QXL' "$export_file" /y
printf '\n== The file (UTF-16 with a byte order mark, shown here as UTF-8)\n'
python3 -c 'import sys; sys.stdout.write(open(sys.argv[1], "rb").read().decode("utf-16").replace("\r\n", "\n"))' \
  "$export_file"
