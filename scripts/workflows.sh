#!/usr/bin/env bash
# workflows.sh FILE...: checks workflows of a public forge: by its schema, and by a linter that knows expressions, contexts and the
# shapes of steps. One line a finding; any makes the exit status 1.
# workflows.sh --install: only installs both, in build/tools, if they are not there; needs npm and the registry that it is set up for.
set -euo pipefail
cd "$(dirname "$0")/.."
tools=build/tools

# Exactly what the lock file names, by its digests, and without running anything of it.
if ! cmp -s scripts/workflows/package-lock.json "$tools/package-lock.json"; then
    command -v npm >/dev/null || {
        echo "workflows.sh: npm is missing; run scripts/setup.sh" >&2
        exit 2
    }
    rm -rf "$tools"
    mkdir -p "$tools.new"
    cp scripts/workflows/package.json scripts/workflows/package-lock.json "$tools.new"
    (cd "$tools.new" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error >&2)
    mv "$tools.new" "$tools"
fi
[ "${1:-}" != --install ] || exit 0
exec node scripts/workflows/lint.mjs "$tools" "$@"
