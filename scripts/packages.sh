# SPDX-License-Identifier: Apache-2.0
#
# For the other scripts to include. need PACKAGE...: installs those of the
# Debian packages that are missing (as root).
need() {
  missing=
  for package in "$@"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) ||
      status=none
    [ "$status" = installed ] || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  echo "Installing:$missing"
  apt-get update -qq
  # The list is of package names: word splitting is meant.
  # shellcheck disable=SC2086
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends $missing
}
