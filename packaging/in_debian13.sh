# Within a bare Debian 13: what a newcomer does there.
set -euo pipefail
cd /root/tarvolink
exec script/test
