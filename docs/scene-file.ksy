# The scene file in Kaitai Struct, from which readers for nine languages are made. docs/scene-file.md describes the
# format, and the texts here are its words. Readers made from this file refuse what is not sound.
meta:
  id: scene_file
  title: Scene file of orvane
  file-extension: bin
  ks-version: 0.9
  endian: le
doc: |
  A model as a tree of nodes with triangle meshes, ready to draw. Little-endian; integers have 32 bits, floats are
  IEEE 754 single precision, text is UTF-16LE except for node names. Blocks follow one another without gaps or
  padding. There is no directory, no checksum and no end mark: the file ends with the last block.

  A reader made from this file calls itself once per level of the tree. Trees can be thousands of nodes deep: raise
  the recursion limit first, or the stack.
seq:
  - id: header
    type: header
  - id: root
    type: node
    doc: The block of the root node. The root has no name.
  - id: rest
    size-eos: true
    valid:
      expr: _.length == 0
    doc: Nothing. The file ends with the last block.
types:
  header:
    doc: 12 bytes.
    seq:
      - id: magic
        type: u4
        valid: 0x11111111
        doc: Marks the beginning of the file.
      - id: version
        type: u4
        valid: 107
        doc: The version of the format.
      - id: reserved
        contents: [0, 0, 0, 0]
        doc: Zeros.

  node:
    doc: |
      A node block: the node record of 340 bytes, its mesh blocks, and the node blocks of its children. The tree only
      describes the model's grouping. Each group and each component instance is a node without a name or meshes, whose
      only child is a node with the contents.
    seq:
      - id: magic
        type: u4
        valid: 0x22222222
        doc: Marks the beginning of a node record.
      - id: name
        size: 256
        type: node_name
        doc: The group's name, or none.
      - id: matrix
        type: f4
        repeat: expr
        repeat-expr: 16
        doc: |
          Row-major, for row vectors, translation in elements 12 to 14. Always the identity: vertices are in their
          final position.
      - id: reserved_after_matrix
        contents: [0, 0, 0, 0]
        doc: Zeros.
      - id: mesh_count
        type: s4
        valid:
          min: 0
        doc: Number of mesh blocks directly after this record.
      - id: child_count
        type: s4
        valid:
          min: 0
        doc: Number of node blocks after the mesh blocks.
      - id: reserved_after_counts
        contents: [0, 0, 0, 0]
        doc: Zeros.
      - id: meshes
        type: mesh
        repeat: expr
        repeat-expr: mesh_count
        doc: The mesh blocks, grouped by material.
      - id: children
        type: node
        repeat: expr
        repeat-expr: child_count
        doc: The node blocks of the children.

  node_name:
    doc: 256 bytes.
    seq:
      - id: bytes
        terminator: 0
        doc: |
          Text in the ANSI code page of the writing system (Windows-1252 on a system without one), before the closing
          NUL. At most 255 bytes; longer names are truncated.
      - id: zeros
        size-eos: true
        valid:
          expr: _.length == 0 or _.max == 0
        doc: Zeros up to the end.

  mesh:
    doc: A mesh block. It has one material, stored in full before its vertices.
    seq:
      - id: magic
        type: u4
        valid: 0x42424242
        doc: Marks the beginning of a mesh record.
      - id: vertex_count
        type: s4
        valid:
          min: 0
          max: 99999
        doc: 0 to 99999.
      - id: triangle_count
        type: s4
        valid:
          min: 0
        doc: One third of the number of indices.
      - id: reserved
        contents: [
          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          0, 0, 0, 0, 0, 0, 0, 0
        ]
        doc: Zeros.
      - id: material
        type: material
        doc: The material of all triangles of the mesh.
      - id: vertices
        type: vertex
        repeat: expr
        repeat-expr: vertex_count
        doc: The vertex array.
      - id: zeros
        size: 4 * vertex_count
        valid:
          expr: _.length == 0 or _.max == 0
        doc: The zero array, a word per vertex.
      - id: triangles
        type: triangle
        repeat: expr
        repeat-expr: triangle_count
        doc: The index array, three per triangle.

  material:
    doc: |
      The material record of 124 bytes, the name and the texture path. Two mesh blocks have the same material if name,
      path and colour are equal. Red, green, blue and alpha are each a whole number from 0 to 255, divided by 255 in
      single precision.
    seq:
      - id: magic
        type: u4
        valid: 0x32443244
        doc: Marks the beginning of a material record.
      - id: name_length
        type: u4
        valid:
          min: 1
        doc: In UTF-16 units, including the closing NUL; at least 1.
      - id: reserved_after_name_length
        contents: [0, 0, 0, 0]
        doc: Zeros.
      - id: red
        type: f4
        valid:
          expr: _ >= 0 and _ <= 1 and _ * 255 - (_ * 255 + 0.5).to_i < 0.001 and (_ * 255 + 0.5).to_i - _ * 255 < 0.001
        doc: Red, 0 to 1.
      - id: green
        type: f4
        valid:
          expr: _ >= 0 and _ <= 1 and _ * 255 - (_ * 255 + 0.5).to_i < 0.001 and (_ * 255 + 0.5).to_i - _ * 255 < 0.001
        doc: Green, 0 to 1.
      - id: blue
        type: f4
        valid:
          expr: _ >= 0 and _ <= 1 and _ * 255 - (_ * 255 + 0.5).to_i < 0.001 and (_ * 255 + 0.5).to_i - _ * 255 < 0.001
        doc: Blue, 0 to 1.
      - id: alpha
        type: f4
        valid:
          expr: _ >= 0 and _ <= 1 and _ * 255 - (_ * 255 + 0.5).to_i < 0.001 and (_ * 255 + 0.5).to_i - _ * 255 < 0.001
        doc: |
          Alpha: 1 is opaque, 0 is transparent.
      - id: reserved_after_color
        contents: [0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]
        doc: Zeros.
      - id: texture_path_length
        type: u4
        valid:
          expr: _ == 1 or (_ > 1 and red == 1 and green == 1 and blue == 1)
        doc: |
          Counted like the name length. A material with a texture path is always white (1, 1, 1), because the picture
          contains the colour. Its alpha still applies.
      - id: reserved_after_texture_path_length
        contents: [0, 0, 0, 0]
        doc: Zeros.
      - id: fixed_one
        type: f4
        valid: 1.0
        doc: Fixed, 1.0.
      - id: reserved_after_fixed_one
        contents: [0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]
        doc: Zeros.
      - id: second_fixed_one
        type: f4
        valid: 1.0
        doc: Fixed, 1.0.
      - id: reserved_at_end
        contents: [
          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0
        ]
        doc: Zeros.
      - id: name
        size: 2 * name_length
        type: wide_text
        doc: The material of an image in the model has an empty name.
      - id: texture_path
        size: 2 * texture_path_length
        type: wide_text
        doc: |
          Empty if there is no texture. Otherwise the directory text that the caller passes to orvane, closed by a
          backslash unless empty, and the file name of a PNG picture. The caller decides what the path is relative to.

  wide_text:
    doc: UTF-16LE with a closing NUL, which is the only one.
    seq:
      - id: units
        type: unit
        repeat: expr
        repeat-expr: _io.size / 2 - 1
        doc: The UTF-16 units before the closing NUL.
      - id: closing_nul
        type: u2
        valid: 0
        doc: The closing NUL.
    instances:
      text:
        pos: 0
        size: _io.size - 2
        type: str
        encoding: UTF-16LE
        doc: The text without the closing NUL.

  unit:
    doc: A UTF-16 unit.
    seq:
      - id: code
        type: u2
        valid:
          expr: _ != 0
        doc: The unit. Not NUL.

  vertex:
    doc: |
      8 floats: position x y z, normal x y z, texture coordinates u v. The axes are left-handed: X to the right, Y up,
      Z away from the viewer. The numbers can be infinite or not a number in unusual models.
    seq:
      - id: position
        type: vector
        doc: Position x y z. The lowest vertex of a scene is at Y = 0, and the centre of its bounding box at X = Z = 0.
      - id: normal
        type: vector
        doc: Normal x y z, of unit length, unless the model's normal has no length.
      - id: u
        type: f4
        doc: Texture coordinate u, which points to the right. Values outside the range 0 to 1 repeat the picture.
      - id: v
        type: f4
        doc: Texture coordinate v, which points down; 0 is the top of the picture.

  triangle:
    doc: |
      Indices, counted from 0 within the vertices of this mesh. The cross product (b - a) x (c - a), by the usual
      formula, points to the visible side of the triangle. Renderers should cull back faces: the file contains every
      face of the model twice, once for each side.
    seq:
      - id: a
        type: u4
        valid:
          expr: _ < _parent.vertex_count
        doc: Index of the first corner.
      - id: b
        type: u4
        valid:
          expr: _ < _parent.vertex_count
        doc: Index of the second corner.
      - id: c
        type: u4
        valid:
          expr: _ < _parent.vertex_count
        doc: Index of the third corner.

  vector:
    doc: Three floats.
    seq:
      - id: x
        type: f4
        doc: To the right.
      - id: y
        type: f4
        doc: Up.
      - id: z
        type: f4
        doc: Away from the viewer.
