# Within a bare Debian 12: the documents' commands that only root in a container may run, as they show
# them. The packages from installation to purge, programs and the shipped examples built against them;
# then the demo, what it has built installed, a program built against that, and it all removed.
set -euo pipefail
cd /root/tarvolink
packages=(libtarvolink-2.0-0 libtarvoscan-1-0 libtarvolink-2.0-dev tarvolink-tools)

# shown BEGIN [DOCUMENT]: runs the command shown there that begins so.
shown() {
  local command
  command=$(grep -m 1 -oP "^(.*\`)?\K$1[^\`]*" "${2:-docs/install.md}") || return
  echo "$ $command"
  eval "$command"
}

# Nobody is here to answer apt-get, and what it only recommends may not be what the packages need.
cat >/etc/apt/apt.conf.d/99container <<'END'
APT::Get::Assume-Yes "true";
APT::Install-Recommends "false";
quiet "2";
END
apt-get update
# Of an earlier run in this container: Boost would hide a dependency that the packages leave out, the
# folders that rm leaves would pass for the packages'.
apt-get purge --autoremove '^libboost' >/dev/null
find /usr/local -iname '*tarvo*' -not -type d -delete  # one that failed removed nothing
find /usr/local/include /usr/local/lib -mindepth 1 -type d -empty -delete

rm -rf build/package
mkdir -p build/package
mv /root/*.deb build/package
shown 'apt-get install' >/dev/null
tarvolink info sim:
tarvolink scan sim: -n 3
ls -L /usr/share/man/man1/tarvolink{,-list,-info,-scan,-view,-sim,-stop,-help}.1.gz
dpkg -L "${packages[@]}" | sort -u >/root/installed

apt-get install g++ cmake make ninja-build pkgconf >/dev/null
tests/packaging/completion.sh tarvolink /usr/share/bash-completion/completions/tarvolink
cmake -G Ninja -S tests/packaging/host -B /root/find_package -DWAY=find_package >/dev/null
cmake --build /root/find_package >/dev/null
/root/find_package/host
tests/packaging/by_document.sh "$PWD" /root/by_package
rm -rf /root/shipped
mkdir /root/shipped
ln -s /usr/share/doc/libtarvolink-2.0-dev/examples /root/shipped/examples
(cd /root/shipped && shown 'cmake -S examples' /root/tarvolink/docs/guide/index.md)

stayed() { find / -xdev -path /root -prune -o -path /var/cache -prune -o "$@" -iname '*tarvo*' -print; }
shown 'apt-get purge' >/dev/null
while read -r path; do
  if [ ! -d "$path" ] && [ -e "$path" ]; then echo "stayed: $path"; fi
done </root/installed | (! grep .)
stayed | (! grep .)
echo "packages: installed, used, purged; nothing stayed"

script/demo
shown 'export PATH' README.md
tarvolink --version
shown 'cmake --install' >/dev/null
PATH=/usr/local/bin:$PATH tests/packaging/by_document.sh "$PWD" /root/by_installation
shown 'xargs rm'
stayed -not -type d | (! grep .)
echo "packages: what the demo has built was installed, used and removed"
