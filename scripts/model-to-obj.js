// Writes the models of an unpacked npm package as OBJ files: node model-to-obj.js <package folder> <output prefix>.
//
// Two kinds of package are known: a module that exports positions and cells (arrays of three numbers each), and a
// folder "models" of compressed ASCII PLY files, which become <prefix>.obj, <prefix>_res2.obj and so on.
'use strict'
const fs = require('fs')
const path = require('path')
const zlib = require('zlib')

function fail(text) {
  console.error('model-to-obj: ' + text)
  process.exit(1)
}

function writeObj(file, positions, cells) {
  const lines = positions.map((p) => `v ${p.join(' ')}`)
  for (const cell of cells) lines.push(`f ${cell.map((index) => index + 1).join(' ')}`)
  fs.writeFileSync(file, lines.join('\n') + '\n')
  console.log(`${file}: ${positions.length} vertices, ${cells.length} faces`)
}

// The array is read, not run: foreign code has no business here.
function exported(source, name) {
  const found = new RegExp(`exports\\.${name}\\s*=\\s*(\\[\\[[\\s\\S]*?\\]\\s*\\])`).exec(source)
  if (!found) fail(`the module exports no ${name}`)
  return JSON.parse(found[1])
}

function parsePly(text, name) {
  const end = text.indexOf('end_header\n')
  const header = text.slice(0, end).split('\n').map((line) => line.trim().split(/\s+/))
  if (end < 0 || !header.some((words) => words[0] === 'format' && words[1] === 'ascii')) fail(`${name} is no ASCII PLY file`)
  const count = (kind) => Number((header.find((words) => words[0] === 'element' && words[1] === kind) || [])[2] || 0)
  const rows = text.slice(end + 'end_header\n'.length).split('\n')
  const numbers = (row) => row.trim().split(/\s+/).map(Number)
  const vertices = count('vertex')
  return {
    positions: rows.slice(0, vertices).map((row) => numbers(row).slice(0, 3)),
    cells: rows.slice(vertices, vertices + count('face')).map((row) => numbers(row).slice(1)),
  }
}

const [folder, prefix] = process.argv.slice(2)
if (!folder || !prefix) fail('usage: node model-to-obj.js <package folder> <output prefix>')
const models = path.join(folder, 'models')
if (fs.existsSync(models)) {
  for (const name of fs.readdirSync(models).filter((file) => file.endsWith('.ply.gz'))) {
    const model = parsePly(zlib.gunzipSync(fs.readFileSync(path.join(models, name))).toString('latin1'), name)
    const suffix = (/_res\d+/.exec(name) || [''])[0]
    writeObj(`${prefix}${suffix}.obj`, model.positions, model.cells)
  }
} else {
  const main = JSON.parse(fs.readFileSync(path.join(folder, 'package.json'), 'utf8')).main || 'index.js'
  const source = fs.readFileSync(path.join(folder, main), 'utf8')
  writeObj(`${prefix}.obj`, exported(source, 'positions'), exported(source, 'cells'))
}
