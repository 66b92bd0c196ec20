; Sound
