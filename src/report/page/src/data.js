// The two ends of what the program has put into the page: a description in JSON, and packed arrays as lines of text.

const TYPES = { f32: [Uint32Array, Float32Array], i32: [Uint32Array, Int32Array], u16: [Uint16Array, Uint16Array] };

export const description = JSON.parse(document.getElementById('description').textContent);
const text = document.getElementById('data').textContent;

function bytesOf(base64) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(base64);
  const string = atob(base64);
  const bytes = new Uint8Array(string.length);
  for (let i = 0; i < string.length; ++i) bytes[i] = string.charCodeAt(i);
  return bytes;
}

async function inflate(bytes) {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

// Byte planes back to items, and differences back to numbers: even ones 2 n stand for n, odd ones 2 n - 1 for -n.
function join(planes, Bits, items, stride) {
  const made = new Bits(items);
  for (let plane = 0; plane < Bits.BYTES_PER_ELEMENT; ++plane) {
    const bytes = planes.subarray(plane * items, (plane + 1) * items);
    for (let i = 0; i < items; ++i) made[i] |= bytes[i] << (8 * plane);
  }
  for (let i = 0; i < items; ++i) {
    const difference = (made[i] >>> 1) ^ -(made[i] & 1);
    made[i] = difference + (i < stride ? 0 : made[i - stride]);
  }
  return made;
}

// The array that a reference of the description means: bytes as they are, all else in its type.
export async function unpack(reference) {
  const bytes = await inflate(bytesOf(text.substr(reference.at, reference.length)));
  if (reference.type === 'u8') return bytes;
  const [Bits, Numbers] = TYPES[reference.type];
  return new Numbers(join(bytes, Bits, reference.items, reference.stride).buffer);
}

// Numbers of 16 bits over their range; NaN where there is none.
export function dequantize([lowest, highest], items) {
  const numbers = new Float32Array(items.length);
  const step = (highest - lowest) / 65534;
  for (let i = 0; i < items.length; ++i) numbers[i] = items[i] === 65535 ? NaN : lowest + step * items[i];
  return numbers;
}
