#!/usr/bin/env bash
# Converts the example, writes its scene as binary glTF, and has the format's official validator judge the file:
# validate-glb.sh FOLDER-OF-THE-PROGRAMS REPOSITORY. Exit code 77: skipped.
set -euo pipefail
programs=$(realpath "$1")
repository=$(realpath "$2")
export NODE_PATH=$programs/gltf-validator/node_modules

if ! [ -d "$NODE_PATH/gltf-validator" ]; then
    echo "SKIPPED: the npm package gltf-validator isn't installed in $NODE_PATH"
    exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
"$programs/orvane" "$repository/examples/house/house.json" house.bin maps house.log
"$programs/scene-inspect" --glb house.glb house.bin >/dev/null

node -e '
require("gltf-validator").validateBytes(new Uint8Array(require("fs").readFileSync("house.glb"))).then(report => {
    const { numErrors, numWarnings } = report.issues;
    console.log(JSON.stringify(report.issues.messages, null, 1));
    console.log(numErrors + " errors, " + numWarnings + " warnings, " + report.info.totalTriangleCount + " triangles");
    process.exit(numErrors === 0 && report.info.totalTriangleCount === 1364 ? 0 : 1);
});'
