#!/bin/sh
# Fetches the pinned 3Dmol.js release with npm and puts its minified build and
# its licence under viewer/vendor/, after checking both against the sha256 sums
# below.  The page of `norvik view` embeds these files (docs/viewer.md); run
# this script to bring them back or, with new pins, to move to another release.
set -eu
version=2.5.5
script_sha=f7cc78921ae72e7623e89cdd111434f58c2efddd2ffda1cd212644b406fb8016
licence_sha=4c6eaaed856f3f28a3b1a98e74f4a8a71618de7d51ea4155c29f6f793bcef861

root=$(cd "$(dirname "$0")/../.." && pwd)
vendor="$root/viewer/vendor"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$work" && npm pack --silent "3dmol@$version" >/dev/null)
tar -xzf "$work/3dmol-$version.tgz" -C "$work" package/build/3Dmol-min.js package/LICENSE

check() {
  actual=$(sha256sum "$1" | cut -d' ' -f1)
  if [ "$actual" != "$2" ]; then
    echo "vendor.sh: $1 has sha256 $actual, not the pinned $2; nothing was replaced" >&2
    exit 1
  fi
}
check "$work/package/build/3Dmol-min.js" "$script_sha"
check "$work/package/LICENSE" "$licence_sha"

mkdir -p "$vendor"
cp "$work/package/build/3Dmol-min.js" "$vendor/3Dmol-min.js"
cp "$work/package/LICENSE" "$vendor/3Dmol-LICENSE.txt"
echo "3Dmol.js $version in $vendor"
