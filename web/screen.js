// The picture on a canvas: sharp at any size, 4:3 or square pixels, scan lines. WebGL 2 where a GPU draws it; else a plain
// canvas of the machine's pixels that the style sheet scales, for what a processor draws in WebGL's place takes longer than
// the machine.
import { WIDTH, HEIGHT } from './machine.js';

const vertex = `#version 300 es
in vec2 corner;
out vec2 at;
void main() { at = vec2(corner.x, 1.0 - corner.y); gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0); }`;

// A pixel keeps its colour up to its edge; only the one host pixel that an edge falls into is a blend.
const fragment = `#version 300 es
precision highp float;
uniform sampler2D picture;
uniform vec2 scale;
uniform float lines;
in vec2 at;
out vec4 colour;
void main() {
  vec2 size = vec2(${WIDTH}.0, ${HEIGHT}.0);
  vec2 p = at * size;
  vec2 whole = floor(p), part = p - whole;
  vec2 sharp = clamp(part * scale, 0.0, 0.5) + clamp((part - 1.0) * scale + 0.5, 0.0, 0.5);
  vec3 c = texture(picture, (whole + sharp) / size).rgb;
  float dark = lines * (0.5 - 0.5 * cos(p.y * 3.14159265));
  colour = vec4(c * (1.0 - 0.5 * dark), 1.0);
}`;

function compile(gl, kind, source) {
  const shader = gl.createShader(kind);
  gl.shaderSource(shader, source);
  gl.compileShader(shader);
  return shader;
}

// Browsers are asked to refuse this, but not all of them do.
function drawnByProcessor(gl) {
  const named = gl.getExtension('WEBGL_debug_renderer_info');
  return /swiftshader|llvmpipe|softpipe|software|basic render/i.test(gl.getParameter(named ? named.UNMASKED_RENDERER_WEBGL : gl.RENDERER));
}

export class Screen {
  constructor(canvas, place) {
    this.canvas = canvas;
    this.place = place;
    this.aspect = 4 / 3;
    this.lines = false;
    this.last = null;  // the picture, as machine.js gives it
    this.begin();
    this.canvas.addEventListener('webglcontextlost', (event) => event.preventDefault());
    this.canvas.addEventListener('webglcontextrestored', () => {
      this.beginGl();
      this.showAll();
    });
    new ResizeObserver(() => this.fit()).observe(place);
    this.fit();
  }

  begin() {
    this.gl = this.canvas.getContext('webgl2', { alpha: false, antialias: false, preserveDrawingBuffer: true, failIfMajorPerformanceCaveat: true });
    if (this.gl && drawnByProcessor(this.gl)) this.withoutGl();
    if (this.gl) return this.beginGl();
    this.canvas.width = WIDTH;
    this.canvas.height = HEIGHT;
    this.plain = this.canvas.getContext('2d', { alpha: false, willReadFrequently: true });
    this.shade = this.place.insertBefore(document.createElement('div'), this.canvas.nextSibling);
    this.shade.className = 'lines';
  }

  // A canvas that had one kind of context gets no other: another one takes its place.
  withoutGl() {
    this.gl.getExtension('WEBGL_lose_context')?.loseContext();
    this.gl = null;
    const fresh = this.canvas.cloneNode();
    this.canvas.replaceWith(fresh);
    this.canvas = fresh;
  }

  beginGl() {
    const gl = this.gl, program = gl.createProgram();
    gl.attachShader(program, compile(gl, gl.VERTEX_SHADER, vertex));
    gl.attachShader(program, compile(gl, gl.FRAGMENT_SHADER, fragment));
    gl.linkProgram(program);
    gl.useProgram(program);
    gl.bindBuffer(gl.ARRAY_BUFFER, gl.createBuffer());
    gl.bufferData(gl.ARRAY_BUFFER, new Float32Array([0, 0, 1, 0, 0, 1, 1, 1]), gl.STATIC_DRAW);
    const corner = gl.getAttribLocation(program, 'corner');
    gl.enableVertexAttribArray(corner);
    gl.vertexAttribPointer(corner, 2, gl.FLOAT, false, 0, 0);
    gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
    gl.texStorage2D(gl.TEXTURE_2D, 1, gl.RGBA8, WIDTH, HEIGHT);
    for (const edge of [gl.TEXTURE_WRAP_S, gl.TEXTURE_WRAP_T]) gl.texParameteri(gl.TEXTURE_2D, edge, gl.CLAMP_TO_EDGE);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.LINEAR);
    this.scale = gl.getUniformLocation(program, 'scale');
    this.linesAt = gl.getUniformLocation(program, 'lines');
  }

  // The largest size that fits; a whole number of host pixels a pixel where the picture is square and there is room.
  fit() {
    const ratio = devicePixelRatio || 1;
    const room = { width: this.place.clientWidth * ratio, height: this.place.clientHeight * ratio };
    let height = Math.min(room.height, room.width / this.aspect), width = height * this.aspect;
    if (this.aspect === WIDTH / HEIGHT && width >= WIDTH) {
      const times = Math.floor(width / WIDTH);
      if (times * WIDTH > 0.9 * width) [width, height] = [times * WIDTH, times * HEIGHT];
    }
    width = Math.max(1, Math.round(width));
    height = Math.max(1, Math.round(height));
    const { style } = this.canvas;
    style.width = `${width / ratio}px`;
    style.height = `${height / ratio}px`;
    if (this.gl) {
      this.canvas.width = width;
      this.canvas.height = height;
    } else {
      style.imageRendering = width % WIDTH === 0 && height % HEIGHT === 0 ? 'pixelated' : 'auto';
      this.shade.hidden = !this.lines || height < HEIGHT;
      this.shade.style.width = style.width;
      this.shade.style.height = style.height;
      this.shade.style.backgroundSize = `100% ${2 * height / ratio / HEIGHT}px`;
    }
    this.showAll();
  }

  // What machine.picture() gives; only lines that have changed are handed on.
  show(picture) {
    this.last = picture;
    if (picture.end > picture.first) this.showLines(picture.first, picture.end);
  }

  showAll() { if (this.last) this.showLines(0, HEIGHT); }

  showLines(first, end) {
    const { pixels } = this.last;
    if (pixels.length === 0) return; // the machine's memory has moved; the next picture comes with the next frame
    if (this.plain) return this.plain.putImageData(new ImageData(pixels, WIDTH, HEIGHT), 0, 0, 0, first, WIDTH, end - first);
    const { gl } = this;
    if (gl.isContextLost()) return;
    gl.viewport(0, 0, this.canvas.width, this.canvas.height);
    gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, first, WIDTH, end - first, gl.RGBA, gl.UNSIGNED_BYTE, pixels.subarray(first * WIDTH * 4, end * WIDTH * 4));
    gl.uniform2f(this.scale, this.canvas.width / WIDTH, this.canvas.height / HEIGHT);
    gl.uniform1f(this.linesAt, this.lines && this.canvas.height >= HEIGHT ? 1 : 0);
    gl.drawArrays(gl.TRIANGLE_STRIP, 0, 4);
  }
}

// A picture to keep: from blue, green, red, 0 to red, green, blue, opaque.
export function toImage(pixels) {
  const image = new ImageData(WIDTH, HEIGHT);
  const from = new Uint32Array(pixels.buffer, pixels.byteOffset, WIDTH * HEIGHT), to = new Uint32Array(image.data.buffer);
  for (let i = 0; i < from.length; i++) {
    const c = from[i];
    to[i] = 0xFF000000 | (c & 0xFF) << 16 | (c & 0xFF00) | (c >> 16 & 0xFF);
  }
  return image;
}
