#!/bin/sh
# Exports to a disk that is too small for the package: full_disk.sh PROGRAM MODEL. Ends with 77 when no disk of that
# kind may be mounted here.
if [ "$3" != inside ]; then
  unshare -m true 2>/dev/null || exit 77
  exec unshare -m sh "$0" "$1" "$2" inside
fi
folder=$(mktemp -d) || exit 1
trap 'umount "$folder" 2>/dev/null; rmdir "$folder"' EXIT
mount -t tmpfs -o size=8k none "$folder" 2>/dev/null || exit 77
message=$("$1" export "$2" "$folder/out.rpk" 2>&1)
result=$?
echo "$message"
[ $result = 4 ] || { echo "exit code $result, expected 4"; exit 1; }
[ "$message" = "creo-standin: $folder/out.rpk: No space left on device" ] || { echo "unexpected message"; exit 1; }
[ ! -e "$folder/out.rpk" ] || { echo "a package that is not complete was left"; exit 1; }
