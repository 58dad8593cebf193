// validate.cjs MODULES FILE...: runs the Khronos validator that is installed in MODULES on every file; of a folder, on
// all *.glb in it. Each file gets a line with its counts, each error and warning a line of its own, the rest is counted
// by kind. Exit status 1 when there is an error or a warning, 2 when there is nothing to validate.
'use strict';

const fs = require('fs');
const path = require('path');
const {createRequire} = require('module');

const [modules, ...places] = process.argv.slice(2);
const validator = createRequire(path.resolve(modules) + path.sep)('gltf-validator');

function filesOf(place) {
  if (!fs.statSync(place).isDirectory()) return [place];
  return fs.readdirSync(place).filter((name) => name.endsWith('.glb')).sort().map((name) => path.join(place, name));
}

async function validate(file) {
  const {issues} = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {maxIssues: 0});
  const kinds = new Map();
  const serious = [];
  for (const {severity, code, pointer, message} of issues.messages) {
    if (severity < 2) {
      serious.push(`  ${severity === 0 ? 'error' : 'warning'} ${code} ${pointer || ''}: ${message}`);
    } else {
      kinds.set(code, (kinds.get(code) || 0) + 1);
    }
  }
  const rest = [...kinds].map(([code, count]) => ` ${code} (${count})`).join(',');
  console.log(`${file}: ${issues.numErrors} errors, ${issues.numWarnings} warnings, ${issues.numInfos} infos, ` +
              `${issues.numHints} hints${rest ? ':' + rest : ''}`);
  for (const line of serious) console.log(line);
  return serious.length === 0;
}

(async () => {
  const files = places.flatMap(filesOf);
  if (files.length === 0) throw new Error('there is no file to validate');
  let good = 0;
  for (const file of files) good += await validate(file);
  console.log(`${validator.version()}: ${good} of ${files.length} files without errors and warnings`);
  process.exitCode = good === files.length ? 0 : 1;
})().catch((error) => {
  console.error(`validate: ${error.message || error}`);
  process.exitCode = 2;
});
