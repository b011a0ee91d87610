// Turns country outlines of the npm package "world-atlas" into examples/data/coasts.txt, once, by hand:
//
//     npm pack world-atlas && tar xzf world-atlas-2.0.2.tgz
//     node tools/convert_coasts.js package/countries-50m.json > examples/data/coasts.txt
//
// Of each country the outline with the largest area is kept, projected to kilometres around its own middle.
'use strict';

const fs = require('fs');

const WANTED = ['Norway', 'Sweden', 'Iceland', 'United Kingdom', 'Ireland', 'Italy', 'Greece', 'Japan', 'New Zealand',
                'Madagascar', 'Thailand', 'Croatia', 'Greenland', 'Chile'];
const EARTH_RADIUS = 6371.0; // km

const atlas = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));

// An arc is a list of steps on an integer grid; a negative number means the same arc backwards.
function arcPoints(number) {
    const {scale, translate} = atlas.transform;
    let x = 0, y = 0;
    const points = atlas.arcs[number < 0 ? ~number : number].map(([dx, dy]) => {
        x += dx;
        y += dy;
        return [x * scale[0] + translate[0], y * scale[1] + translate[1]];
    });
    return number < 0 ? points.reverse() : points;
}

// Each arc begins with the last point of the one before.
function ringPoints(arcs) {
    return arcs.flatMap((number) => arcPoints(number).slice(1));
}

// Lambert's azimuthal equal-area projection around (longitude, latitude) `middle`, degrees to kilometres.
function project([longitude, latitude], middle) {
    const radians = Math.PI / 180;
    const l = (longitude - middle[0]) * radians, b = latitude * radians, b0 = middle[1] * radians;
    const k = Math.sqrt(2 / (1 + Math.sin(b0) * Math.sin(b) + Math.cos(b0) * Math.cos(b) * Math.cos(l)));
    return [EARTH_RADIUS * k * Math.cos(b) * Math.sin(l),
            EARTH_RADIUS * k * (Math.cos(b0) * Math.sin(b) - Math.sin(b0) * Math.cos(b) * Math.cos(l))];
}

function middleOf(points) {
    const range = (k) => {
        const values = points.map((p) => p[k]);
        return (Math.min(...values) + Math.max(...values)) / 2;
    };
    return [range(0), range(1)];
}

function signedArea(points) {
    return points.reduce((sum, p, i) => {
        const q = points[(i + 1) % points.length];
        return sum + (p[0] * q[1] - q[0] * p[1]) / 2;
    }, 0);
}

function largestOutline(country) {
    const polygons = country.type === 'Polygon' ? [country.arcs] : country.arcs;
    const outlines = polygons.map((rings) => {
        const degrees = ringPoints(rings[0]);
        return degrees.map((p) => project(p, middleOf(degrees)));
    });
    const largest = outlines.reduce((a, b) => (Math.abs(signedArea(b)) > Math.abs(signedArea(a)) ? b : a));
    return signedArea(largest) < 0 ? largest.reverse() : largest;
}

const lines = [
    '# Outlines of the largest land of some countries, in kilometres around their middle, counter-clockwise.',
    '# Made with Natural Earth (naturalearthdata.com), 1:50m, public domain; from the npm package world-atlas 2.0.2.',
    '# outline: number of points, name; then x y each.',
];
for (const name of WANTED) {
    const country = atlas.objects.countries.geometries.find((g) => g.properties.name === name);
    const points = largestOutline(country);
    lines.push(`outline ${points.length} ${name}`);
    for (const p of points)
        lines.push(`${p[0].toFixed(2)} ${p[1].toFixed(2)}`);
}
console.log(lines.join('\n'));
