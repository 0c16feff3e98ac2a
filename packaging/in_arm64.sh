# Within a bare Debian 12: cross-builds for arm64 and runs the tests under qemu-user.
set -euo pipefail
cd /root/tarvolink
dpkg --add-architecture arm64
script/setup arm64
cmake --preset release -B build/arm64 --toolchain cmake/arm64.cmake
cmake --build build/arm64

echo "arm64: left out tests/docs, whose pages are the same on each machine, and tests/packaging, which builds for this one"
# A test that starts the program needs the kernel to know qemu as its interpreter. The kernel knows it
# for every container, so it goes again.
folders=(base port scip scan scip1 scip2 driver sim faults soak)
formats=/proc/sys/fs/binfmt_misc
mount -t binfmt_misc binfmt_misc $formats || true
if [ -e $formats/register ] && [ ! -e $formats/qemu-aarch64 ]; then
  cat /usr/lib/binfmt.d/qemu-aarch64.conf >$formats/register
  trap 'echo -1 >$formats/qemu-aarch64' EXIT
fi
if build/arm64/tools/tarvolink --version >/dev/null 2>&1; then
  folders+=(tools examples)
else
  echo "arm64: this kernel starts no arm64 programs: left out the tests that start the program"
fi

# qemu-user knows no line speed of 500000 (its table of termios speeds ends at 460800).
failed=()
for folder in "${folders[@]/#/tests/}"; do
  ctest --test-dir "build/arm64/$folder" --output-on-failure --repeat until-pass:2 -j 4 -E "500000|ChangesItsSpeed" ||
    failed+=("$folder")
done
[ ${#failed[@]} -eq 0 ] || { echo "arm64: failed in: ${failed[*]}"; exit 1; }
