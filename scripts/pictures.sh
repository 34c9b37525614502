#!/usr/bin/env bash
# pictures.sh: remakes the pictures of docs/images from the output of the window's layout test and the demo. Look at every one of
# them before it is committed.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/build.sh test
ctest --preset test --no-tests=error -R '^WindowLayout$' </dev/null
mkdir -p docs/images
cp build/languages/en-1-ready.png docs/images/window-ready.png
cp build/languages/en-3-running.png docs/images/window-running.png
cp build/languages/en-4-finished.png docs/images/window-finished.png
convert build/languages/languages.png -colors 128 PNG8:docs/images/window-languages.png

[ -f build/demo-report.html ] || ./scripts/demo.sh
profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
HOME=$profile chromium --headless --no-sandbox --disable-gpu --no-first-run --disable-dev-shm-usage --hide-scrollbars \
    --user-data-dir="$profile" --window-size=1000,900 --screenshot="$PWD/docs/images/report.png" \
    "file://$PWD/build/demo-report.html" >"$profile/log" 2>&1 || {
    cat "$profile/log" >&2
    exit 1
}
ls docs/images
