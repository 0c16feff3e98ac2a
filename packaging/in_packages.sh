# Within a bare Debian 12: the packages from installation to purge, host programs and the shipped
# examples built against them, one of these run on a simulated sensor; and README's first command.
set -euo pipefail
cd /root
packages=(libtarvolink-2.0-0 libtarvolink-2.0-dev tarvolink-tools)

apt-get -qq update
apt-get -qq install --yes --no-install-recommends ./*.deb >/dev/null
tarvolink info sim:
tarvolink scan sim: -n 3
ls /usr/share/man/man1/tarvolink-scan.1.gz
dpkg -L "${packages[@]}" | sort -u >installed

tarvolink/script/setup test
host=tarvolink/tests/packaging/host
cmake -G Ninja -S "$host" -B find_package -DWAY=find_package >/dev/null
cmake --build find_package >/dev/null
find_package/host
CXX=g++ CXXFLAGS='' tarvolink/tests/packaging/pkg_config.sh \
  "/usr/lib/$(g++ -print-multiarch)" /root/by_pkg_config

examples=/usr/share/doc/libtarvolink-2.0-dev/examples
cmake -G Ninja -S $examples -B by_examples >/dev/null
cmake --build by_examples >/dev/null
coproc sensor { exec tarvolink sim --link /root/sensor; }
pid=$sensor_PID
read -r -t 60 _ <&"${sensor[0]}"
by_examples/first_scan /root/sensor
kill "$pid"
wait "$pid"

apt-get -qq purge --yes "${packages[@]}" >/dev/null
while read -r path; do
  if [ ! -d "$path" ] && [ -e "$path" ]; then echo "stayed: $path"; fi
done <installed | (! grep .)
find / -xdev -path /root -prune -o -path /var/cache -prune -o -iname '*tarvolink*' -print | (! grep .)
echo "packages: installed, used, purged; nothing stayed"

tarvolink/script/demo
