#!/bin/sh
# validate.sh FOLDER FILE...: runs the Khronos glTF validator on the files; of a folder, on all *.glb in it. The validator
# is installed into FOLDER once, in the version that package-lock.json names. Without npm, or when it cannot be fetched,
# the first line says "skipped: ...".
set -u
here=$(cd "$(dirname "$0")" && pwd)
folder=$1
shift

for program in node npm; do
  command -v "$program" >/dev/null || { echo "skipped: there is no $program"; exit 0; }
done
mkdir -p "$folder" || exit 2
cp "$here/validator/package.json" "$folder/"
if ! cmp -s "$here/validator/package-lock.json" "$folder/package-lock.json" || [ ! -d "$folder/node_modules" ]; then
  rm -rf "$folder/node_modules"
  cp "$here/validator/package-lock.json" "$folder/"
  if ! (cd "$folder" && npm ci --no-audit --no-fund --ignore-scripts >npm.log 2>&1); then
    rm -rf "$folder/node_modules"
    echo "skipped: npm could not fetch the validator (see $folder/npm.log)"
    exit 0
  fi
fi
exec node "$here/validator/validate.cjs" "$folder" "$@"
