; Screen editor
