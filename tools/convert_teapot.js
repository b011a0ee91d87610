// Turns the mesh of the npm package "teapot" into examples/data/teapot.obj, once, by hand:
//
//     npm pack teapot && tar xzf teapot-1.0.0.tgz
//     node tools/convert_teapot.js package/teapot.js > examples/data/teapot.obj
//
// The package repeats vertices along the seams of its patches; equal positions are welded here, so that triangles which
// meet share their vertices.
'use strict';

const path = require('path');
const {positions, cells} = require(path.resolve(process.argv[2]));

const numbers = new Map();
const welded = [];
const renumbered = positions.map((p) => {
    const key = p.join(' ');
    if (!numbers.has(key)) {
        welded.push(p);
        numbers.set(key, welded.length);
    }
    return numbers.get(key);
});

const lines = [
    '# The Utah teapot of Martin Newell; public domain.',
    `# From the npm package teapot 1.0.0 (public domain), equal positions welded: ${welded.length} vertices,`,
    `# ${cells.length} triangles, counter-clockwise seen from outside, y upwards. The spout is at positive x.`,
];
for (const p of welded)
    lines.push(`v ${p.join(' ')}`);
for (const cell of cells)
    lines.push(`f ${cell.map((i) => renumbered[i]).join(' ')}`);
console.log(lines.join('\n'));
